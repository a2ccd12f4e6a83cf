#include <QScreen>

#include "platform/windows/ToolTipWindow.h"
#include "tests/TestProgram.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

class ToolTipWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_owner.show(); }

    void staysOnTheScreenAndOffThePointer() {
        const QRect screen = m_owner.screen()->availableGeometry();
        for (const int lines : {1, 5, 1000}) {
            const QString text = u"A line of words\n"_s.repeated(lines);
            for (const QPoint place : {screen.topLeft(), screen.topRight(), screen.bottomLeft(),
                                       screen.bottomRight(), screen.center(), QPoint(9999, 9999)}) {
                show(text, place);
                QVERIFY(m_window.isVisible() && screen.contains(m_window.geometry()));
                QVERIFY(!m_window.geometry().contains(place));
            }
        }
    }

    void takesTheSizeOfItsText() {
        const QSize small = show(u"short"_s);
        const QSize word = show(QString(200, u'w'));
        QVERIFY(small.width() < 100 && word.width() > 200 && word.width() <= 300);
        QVERIFY(word.height() > 3 * small.height());
        QCOMPARE(show(u"\r\nshort\n"_s), small);
        QVERIFY(show(u"short\r\n<br>"_s).height() < 2 * small.height());
        for (const char* part : {"x", "\n\u00a0", "a \u05d0\u0301\u0302", "\u0301"}) {
            const QSize huge = show(QString::fromUtf8(part).repeated(1'000'000));
            QVERIFY(huge.width() <= 300 && huge.height() <= m_owner.screen()->size().height() / 2);
        }
    }

    void goesWithItsTextOrItsOwner() {
        show(u"text"_s);
        show(u" \n"_s);
        QVERIFY(!m_window.isVisible());
        show(u"text"_s);
        m_owner.hide();
        QVERIFY(!m_window.isVisible());
        show(u"too late"_s);
        QVERIFY(!m_window.isVisible());
    }

private:
    QSize show(const QString& text, QPoint place = {50, 50}) {
        m_window.showText(text, place, &m_owner);
        return m_window.size();
    }

    QRasterWindow m_owner;
    ToolTipWindow m_window;
};

}  // namespace
}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::ToolTipWindowTest)
#include "ToolTipWindowTest.moc"
