#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>
#include <algorithm>
#include <cstdio>

namespace {

using namespace Qt::StringLiterals;

/// Stands where the panel's watcher stands and notes the moment at which an item registers.
class Watcher final : public QDBusVirtualObject {
    Q_OBJECT

public:
    /// Enough for programs that look before they register.
    [[nodiscard]] QString introspect(const QString& /*path*/) const override {
        return u"<interface name=\"org.kde.StatusNotifierWatcher\">"
               "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
               "<method name=\"RegisterStatusNotifierItem\"><arg type=\"s\" direction=\"in\"/></method>"
               "</interface>"_s;
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == "RegisterStatusNotifierItem"_L1) {
            Q_EMIT registered();
            return connection.send(message.createReply());
        }
        // Some programs look first whether anybody shows the items.
        const bool asksForHost =
            message.arguments().value(1).toString() == "IsStatusNotifierHostRegistered"_L1;
        return connection.send(message.createReply(
            QVariant::fromValue(QDBusVariant(asksForHost ? QVariant(true) : QVariant(0)))));
    }

Q_SIGNALS:
    void registered();
};

/// Milliseconds from starting the program to its item; negative when none came.
double measure(Watcher& watcher, const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QEventLoop loop;
    QElapsedTimer timer;
    double result = -1;
    QObject::connect(&watcher, &Watcher::registered, &loop, [&] {
        result = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        loop.quit();
    });
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    timer.start();
    process.start(program, arguments);
    loop.exec();
    process.terminate();
    if (!process.waitForFinished(5000))
        process.kill();
    process.waitForFinished();
    return result;
}

double median(QList<double> values) {
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

}  // namespace

/// startup-bench RUNS MINIMAL PROGRAM [ARGUMENT…]: the medians, run in turns.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    Watcher watcher;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (arguments.size() < 4 || !bus.registerVirtualObject(u"/StatusNotifierWatcher"_s, &watcher) ||
        !bus.registerService(u"org.kde.StatusNotifierWatcher"_s)) {
        std::fputs("usage, in a session of its own: startup-bench RUNS MINIMAL PROGRAM [ARGUMENT…]\n",
                   stderr);
        return 2;
    }
    QList<double> minimal;
    QList<double> program;
    for (int i = 0; i < arguments.at(1).toInt(); ++i) {
        minimal.append(measure(watcher, arguments.at(2), {}));
        program.append(measure(watcher, arguments.at(3), arguments.sliced(4)));
    }
    std::printf(
        "exec to registered item: %.0f ms; a minimal Qt program: %.0f ms (medians of %d runs, ratio %.2f)\n",
        median(program), median(minimal), arguments.at(1).toInt(), median(program) / median(minimal));
    return 0;
}

#include "StartupBench.moc"
