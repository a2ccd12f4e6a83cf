#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QRegularExpression>
#include <algorithm>
#include <chrono>
#include <cstdio>

#include "platform/base/MemoryTrim.h"
#include "platform/windows/Popover.h"
#include "tests/popover/Scene.h"

// How fast the popover opens and scrolls with many projects, and what memory it takes and gives back:
// popover-bench [ROUNDS], the number of times that it is opened and closed to look for leaks.

namespace {

using namespace tidemark;

constexpr int projectCount = 2000;
constexpr QPoint place(1200, 10);

/// Of what /proc tells of this process's memory, in MB.
double memory(const char* field) {
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    static const QRegularExpression number(u"\\d+"_s);
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith(field))
            return number.match(QString::fromLatin1(line)).captured().toDouble() / 1024;
    return 0;
}

void fill(Scene& scene) {
    QStringList names;
    for (int i = 0; i < projectCount; ++i)
        names << u"project-%1"_s.arg(i, 4, 10, QChar(u'0'));
    scene.track(names);
    AppState::ByProject<Deployment> deployments;
    for (int i = 0; i < projectCount; ++i) {
        Deployment deployment = scene.deployment(i % 7 == 0 ? u"BUILDING"_s : u"READY"_s, 1min * i);
        deployment.alias = QList<QString>{u"site-%1.example.com"_s.arg(i)};
        deployments.insert(names.at(i), deployment);
    }
    scene.state.setDeployments(deployments);
}

/// Times of frames, in milliseconds.
class Frames final : public QObject {
public:
    void watch(QQuickWindow* window) {
        window->installEventFilter(this);
        connect(window, &QQuickWindow::frameSwapped, this, [this] {
            m_latest = milliseconds(m_frame);
            m_sinceStart = milliseconds(m_start);
            ++m_count;
        });
    }
    void start() {
        m_count = 0;
        m_start.start();
    }
    void waitForFrame() const {
        while (m_count == 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    /// From start() to the first frame on the screen.
    [[nodiscard]] double sinceStart() const { return m_sinceStart; }
    /// What building and drawing the latest frame took.
    [[nodiscard]] double latest() const { return m_latest; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest)
            m_frame.start();
        return QObject::eventFilter(watched, event);
    }

private:
    static double milliseconds(const QElapsedTimer& timer) {
        return timer.isValid() ? static_cast<double>(timer.nsecsElapsed()) / 1e6 : 0;
    }

    QElapsedTimer m_start;
    QElapsedTimer m_frame;
    double m_latest = 0;
    double m_sinceStart = 0;
    int m_count = 0;
};

void print(const char* what, QList<double> times) {
    std::ranges::sort(times);
    std::printf("%s: %.1f ms median, %.1f ms at worst (of %lld)\n", what, times.at(times.size() / 2),
                times.last(), static_cast<long long>(times.size()));
}

void wait(std::chrono::milliseconds time) {
    QElapsedTimer timer;
    timer.start();
    while (!timer.hasExpired(time.count()))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

void close(Popover& popover) {
    popover.close();
    wait(20ms);
}

void scroll(QQuickView& view, Frames& frames) {
    auto* list = view.rootObject()->findChild<QQuickItem*>(u"deployments"_s);
    if (!list)
        return;
    QList<double> times;
    const int end = static_cast<int>(list->property("contentHeight").toDouble() - list->height());
    for (int y = 60; y < end; y += 60) {
        frames.start();
        QElapsedTimer building;
        building.start();
        list->setProperty("contentY", y);
        const double built = static_cast<double>(building.nsecsElapsed()) / 1e6;
        frames.waitForFrame();
        times.append(built + frames.latest());
    }
    print("a frame while scrolling from end to end", times);
}

void openAndClose(Popover& popover, int rounds) {
    for (int round = 0; round <= rounds; ++round) {
        if (round % std::max(1, rounds / 5) == 0) {
            wait(300ms);
            giveBackMemory();
            std::printf("after %d rounds: %.1f MB anonymous, %.1f MB PSS\n", round, memory("Pss_Anon:"),
                        memory("Pss:"));
        }
        popover.toggle(place);
        QCoreApplication::processEvents();
        popover.close();
        QCoreApplication::processEvents();
        // Every other time the view is dropped meanwhile.
        if (round % 2 == 1)
            wait(3ms);
    }
}

}  // namespace

int main(int argc, char** argv) {
    PopoverView::prepareApplication();
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    Scene scene;
    scene.model.setActive(false);
    fill(scene);
    Frames frames;
    QQuickView* view = nullptr;
    std::unique_ptr<QQmlEngine> engine;
    const auto makeWindow = [&] {
        if (!engine)
            engine = std::make_unique<QQmlEngine>();
        auto window = std::make_unique<PopoverView>(scene.model, *engine);
        view = window.get();
        frames.watch(view);
        return window;
    };
    wait(500ms);
    const double before = memory("Pss:");
    std::printf("before: %.1f MB PSS, %.1f MB anonymous\n", before, memory("Pss_Anon:"));
    {
        Popover popover(makeWindow, 1s);
        QObject::connect(&popover, &Popover::aboutToShow, [&scene] { scene.model.setActive(true); });
        frames.start();
        popover.toggle(place);
        frames.waitForFrame();
        std::printf("first frame: %.1f ms\n", frames.sinceStart());
        QList<double> times;
        for (int i = 0; i < 30; ++i) {
            wait(100ms);
            close(popover);
            frames.start();
            popover.toggle(place);
            frames.waitForFrame();
            times.append(frames.sinceStart());
        }
        print("first frame when opened again", times);
        wait(500ms);
        scroll(*view, frames);
        std::printf("open: %.1f MB PSS\n", memory("Pss:"));
        close(popover);
        wait(3s);
        giveBackMemory();
        std::printf("dropped: %.1f MB PSS, %.1f MB more than before\n", memory("Pss:"),
                    memory("Pss:") - before);
    }
    Popover popover(makeWindow, 1ms);
    QObject::connect(&popover, &Popover::aboutToShow, [&scene] { scene.model.setActive(true); });
    openAndClose(popover, argc > 1 ? QByteArray(argv[1]).toInt() : 1000);
    return 0;
}
