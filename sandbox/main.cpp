#include <pthread.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <array>
#include <csignal>
#include <cstdio>
#include <optional>

#include "sandbox/Sandbox.h"

namespace {

using namespace tidemark::sandbox;

struct Arguments {
    SandboxOptions options;
    bool quiet = false;
};

/// Nothing for a value that makes no sense.
std::optional<Arguments> parse(const QCoreApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Stands in for the web services on 127.0.0.1. GET /sandbox lists its controls."));
    parser.addHelpOption();
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Port; 0 takes any free one."),
                                  QStringLiteral("number"), QStringLiteral("0"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Equal seeds give equal worlds."),
                                  QStringLiteral("number"), QStringLiteral("1"));
    const QCommandLineOption accounts(QStringLiteral("accounts"), QStringLiteral("How many accounts."),
                                      QStringLiteral("number"), QStringLiteral("2"));
    const QCommandLineOption projects(QStringLiteral("projects"), QStringLiteral("How many projects in all."),
                                      QStringLiteral("number"), QStringLiteral("12"));
    const QCommandLineOption speed(QStringLiteral("speed"),
                                   QStringLiteral("How fast the world lives; 0 freezes it."),
                                   QStringLiteral("factor"), QStringLiteral("1"));
    const QCommandLineOption quiet(QStringLiteral("quiet"), QStringLiteral("Do not report the requests."));
    parser.addOptions({port, seed, accounts, projects, speed, quiet});
    parser.process(application);

    Arguments arguments;
    std::array<bool, 5> valid{};
    arguments.options.port = parser.value(port).toUShort(&valid[0]);
    arguments.options.seed = parser.value(seed).toULongLong(&valid[1]);
    arguments.options.accounts = parser.value(accounts).toUShort(&valid[2]);
    arguments.options.projects = parser.value(projects).toUShort(&valid[3]);
    arguments.options.speed = parser.value(speed).toDouble(&valid[4]);
    arguments.quiet = parser.isSet(quiet);
    for (const bool each : valid) {
        if (!each)
            return std::nullopt;
    }
    return arguments;
}

void report(const LoggedRequest& request) {
    const QByteArray time = QDateTime::fromMSecsSinceEpoch(request.time).toString(u"HH:mm:ss.zzz").toLatin1();
    std::fprintf(stderr, "%s %s %s %d\n", time.constData(), request.method.constData(),
                 qUtf8Printable(request.path), request.status);
}

}  // namespace

int main(int argc, char** argv) {
    // Blocked before any thread starts, so that they reach the wait below and nothing else.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    const QCoreApplication application(argc, argv);
    const std::optional<Arguments> arguments = parse(application);
    if (!arguments) {
        std::fputs("tidemark-sandbox: an option's value is not a number that fits\n", stderr);
        return 2;
    }
    Sandbox sandbox(arguments->options);
    if (!arguments->quiet)
        sandbox.log().setListener(report);
    if (!sandbox.start()) {
        std::fprintf(stderr, "tidemark-sandbox: port %d is taken\n", arguments->options.port);
        return 1;
    }
    std::printf("%s\n", qUtf8Printable(sandbox.baseUrl().toString()));
    std::fflush(stdout);

    int signal = 0;
    sigwait(&ending, &signal);
    sandbox.stop();
    return 0;
}
