#include <QGuiApplication>
#include <QScreen>
#include <functional>
#include <utility>

#include "platform/windows/MenuWindow.h"
#include "tests/TestProgram.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

using Gesture = std::function<void(MenuWindow&)>;

/// The centre of an entry among `count` entries of the same height.
QPoint middle(const MenuWindow& window, int index, int count = 4) {
    return {window.width() / 2, window.height() * (2 * index + 1) / (2 * count)};
}

Gesture keys(const QList<QKeyCombination>& keys) {
    return [keys](MenuWindow& window) {
        for (const QKeyCombination key : keys)
            QTest::keyClick(&window, key.key(), key.keyboardModifiers());
    };
}

Gesture drag(int from, int to) {
    return [from, to](MenuWindow& window) {
        QTest::mousePress(&window, Qt::LeftButton, {}, middle(window, from));
        QTest::mouseMove(&window, middle(window, to));
        QTest::mouseRelease(&window, Qt::LeftButton, {}, middle(window, to));
    };
}

class MenuWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void chooses_data() {
        QTest::addColumn<QString>("letters");
        QTest::addColumn<Gesture>("gesture");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* letters, const Gesture& gesture,
                            const char* expected) {
            QTest::newRow(name) << QString::fromLatin1(letters) << gesture << QString::fromLatin1(expected);
        };
        row("down", "A-B--cD", keys({Qt::Key_Down, Qt::Key_Return}), "closed c");
        row("round", "abc", keys({Qt::Key_Home, Qt::Key_Up, Qt::Key_Up, Qt::Key_Enter}), "closed b");
        row("end", "-aB-cD-", keys({Qt::Key_Down, Qt::Key_End, Qt::Key_Return}), "closed c");
        row("all disabled", "AB", keys({Qt::Key_Down, Qt::Key_Up, Qt::Key_Return}), "");
        row("shortcut", "a-bq", keys({Qt::CTRL | Qt::Key_Q}), "closed q");
        row("disabled shortcut", "aQ", keys({Qt::CTRL | Qt::Key_Q, Qt::Key_Q}), "");
        row("escape", "ab", keys({Qt::Key_Down, Qt::Key_Escape}), "closed ");
        row("click", "abcd", drag(1, 1), "closed b");
        row("disabled", "abCd", drag(2, 2), "");
        row("outside", "ab", drag(-1, 0), "closed ");
        row("emptied", "ab", [](MenuWindow& window) { window.setMenu({}); }, "closed ");
        const auto loseFocus = [](MenuWindow& window) {
            QFocusEvent lost(QEvent::FocusOut);
            QCoreApplication::sendEvent(&window, &lost);
        };
        row("focus lost", "ab", loseFocus, "closed ");
    }

    void chooses() {
        QFETCH(QString, letters);
        QFETCH(Gesture, gesture);
        QFETCH(QString, expected);
        MenuWindow window;
        window.popup(menuOf(u"--"_s), {100, 100});
        QVERIFY(!window.isVisible());
        window.popup(menuOf(u"xyz"_s), {10, 10});
        window.popup(menuOf(letters), {100, 100});
        gesture(window);
        const QString outcome = window.isVisible() ? QString() : u"closed "_s;
        QCOMPARE(outcome + chosen(), expected);
    }

    void releaseOfTheOpeningClickNeedsADrag() {
        QRasterWindow panel;
        panel.setGeometry(0, 0, 800, 100);
        panel.show();
        MenuWindow window;
        for (const bool isDragged : {false, true}) {
            QTest::mousePress(&panel, Qt::LeftButton, {}, {100, 98});
            window.popup(menuOf(u"abcd"_s), {100, 98});
            const QPoint place = isDragged ? middle(window, 1) : QPoint(3, 6);
            QTest::mouseMove(&window, place);
            QTest::mouseRelease(&window, Qt::LeftButton, {}, place);
            QCOMPARE(chosen(), isDragged ? u"b"_s : QString());
        }
    }

    void leavesThePanelUncovered() {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        MenuWindow window;
        for (const QRect& panel :
             {QRect(0, 0, screen.width(), 40), QRect(0, screen.bottom() - 39, screen.width(), 40),
              QRect(0, 0, 50, screen.height()), QRect(screen.right() - 49, 0, 50, screen.height())}) {
            window.popup(menuOf(u"ab"_s), panel.center(), panel);
            QVERIFY(!window.geometry().intersects(panel));
            QVERIFY(window.geometry().adjusted(-1, -1, 1, 1).intersects(panel));
            QVERIFY(screen.contains(window.geometry()));
        }
    }

    void keepsItsCornerOnTheScreen() {
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const QPoint end = screen.bottomRight() + QPoint(1, 1);
        for (const QPoint place : {QPoint(60, 300), QPoint(end.x(), screen.y()), end}) {
            MenuWindow window;
            const auto corner = [&] {
                return window.position() + QPoint(place.x() == end.x() ? window.width() : 0,
                                                  place.y() == end.y() ? window.height() : 0);
            };
            window.popup(menuOf(u"ab"_s), place);
            QCOMPARE(corner(), place);
            const QSize before = window.size();
            Menu menu = menuOf(u"abc"_s);
            menu.last().currentTitle = [] { return QString(1000, u'w'); };
            window.setMenu(menu);
            QCOMPARE(corner(), place);
            const QSize grown = window.size();
            QVERIFY(before.width() < grown.width() && before.height() < grown.height());
            QVERIFY(grown.width() < screen.width());
            window.setMenu(menuOf(u"abc"_s));
            QCOMPARE(window.size(), grown);
        }
    }

    void everyEntryOfALongMenuIsReachable() {
        MenuWindow window;
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        window.popup(menuOf(QString(50, u'a') + u"bc"_s), screen.center());
        QVERIFY(screen.contains(window.geometry()));
        keys({Qt::Key_End, Qt::Key_Up, Qt::Key_Home})(window);
        // The pointer at the lower edge scrolls the menu to its end.
        const QPoint bottom(20, window.height() - 12);
        QTest::mouseMove(&window, bottom);
        const auto isChosenByClick = [&] {
            QTest::mouseClick(&window, Qt::LeftButton, {}, bottom);
            return !window.isVisible();
        };
        QTRY_VERIFY(isChosenByClick());
        QCOMPARE(chosen(), u"c"_s);
    }

    void changesUnderThePointerChooseNothing() {
        MenuWindow window;
        window.popup(menuOf(u"abc"_s), {100, 100});
        const QPoint place = middle(window, 1, 3);
        QTest::mousePress(&window, Qt::LeftButton, {}, place);
        window.setMenu(menuOf(u"xabc"_s));
        QTest::mouseRelease(&window, Qt::LeftButton, {}, place);
        window.setMenu(menuOf(u"yxabc"_s));
        QTest::mouseClick(&window, Qt::LeftButton, {}, place);
        QCOMPARE(chosen(), QString());
        // The last click has highlighted an entry, which stays highlighted when it moves.
        window.setMenu(menuOf(u"Yabcx"_s));
        keys({Qt::Key_Return})(window);
        QCOMPARE(chosen(), u"x"_s);

        window.popup(menuOf(u"abc"_s), {100, 100});
        QTest::mousePress(&window, Qt::LeftButton, {}, place);
        window.setMenu(menuOf(u"AbCd"_s));
        QTest::mouseRelease(&window, Qt::LeftButton, {}, place);
        QCOMPARE(chosen(), u"b"_s);
    }

private:
    /// Makes an entry of each letter, which is its title and shortcut. Capital letters are disabled, dashes
    /// are separators.
    [[nodiscard]] Menu menuOf(const QString& letters) {
        Menu menu;
        for (const QChar letter : letters) {
            menu.append({.identifier = letter.toLower(), .title = letter, .isSeparator = letter == u'-'});
            if (letter != u'-')
                menu.last().keyEquivalent = letter.toLower();
            if (letter.isLower())
                menu.last().action = [this, letter] { m_chosen += letter; };
        }
        return menu;
    }

    /// The entries that were chosen since the last call, in order.
    [[nodiscard]] QString chosen() {
        QCoreApplication::processEvents();
        return std::exchange(m_chosen, {});
    }

    QString m_chosen;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::MenuWindowTest)
#include "MenuWindowTest.moc"
