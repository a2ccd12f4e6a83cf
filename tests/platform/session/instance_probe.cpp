// A process that claims an identifier and says what came of it, line by line: its role and every activation.
// It ends with its standard input.

#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cstdio>

#include "platform/session/SingleInstance.h"

using namespace Qt::StringLiterals;

using tidemark::SingleInstance;

namespace {

void say(const QByteArray& line) {
    std::puts(line.constData());
    std::fflush(stdout);
}

const char* name(SingleInstance::Role role) {
    switch (role) {
        case SingleInstance::Role::first:
            return "first";
        case SingleInstance::Role::second:
            return "second";
        case SingleInstance::Role::standalone:
            return "standalone";
    }
    return "";
}

}  // namespace

int main(int argc, char** argv) {
    SingleInstance instance(u"com.tidemark.Tidemark-Test"_s);
    const QCoreApplication app(argc, argv);
    QObject::connect(&instance, &SingleInstance::activated,
                     [](const QString& token) { say("activated " + token.toUtf8()); });
    const SingleInstance::Role role = instance.claim();
    say(name(role));
    if (role != SingleInstance::Role::first)
        return 0;
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
