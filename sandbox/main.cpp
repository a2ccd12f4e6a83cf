#include <pthread.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <array>
#include <csignal>
#include <cstdio>
#include <optional>

#include "sandbox/Sandbox.h"

using namespace Qt::StringLiterals;

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
        u"Stands in for the web services on 127.0.0.1. GET /sandbox lists its controls."_s);
    parser.addHelpOption();
    const QCommandLineOption port(u"port"_s, u"Port; 0 takes any free one."_s, u"number"_s, u"0"_s);
    const QCommandLineOption seed(u"seed"_s, u"Equal seeds give equal worlds."_s, u"number"_s, u"1"_s);
    const QCommandLineOption accounts(u"accounts"_s, u"How many accounts."_s, u"number"_s, u"2"_s);
    const QCommandLineOption projects(u"projects"_s, u"How many projects in all."_s, u"number"_s, u"12"_s);
    const QCommandLineOption speed(u"speed"_s, u"How fast the world lives; 0 freezes it."_s, u"factor"_s,
                                   u"1"_s);
    const QCommandLineOption quiet(u"quiet"_s, u"Do not report the requests."_s);
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
    for (const bool each : valid)
        if (!each)
            return std::nullopt;
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
