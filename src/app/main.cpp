#include <QGuiApplication>
#include <cstdio>

#include "app/Tidemark.h"
#include "platform/base/CoreDumps.h"
#include "platform/base/TerminationSignals.h"

int main(int argc, char** argv) {
    using namespace Qt::StringLiterals;
    tidemark::TerminationSignals::exitUntilMade();
    tidemark::coredumps::forbid();
    if (!tidemark::Tidemark::hasDesktop()) {
        std::fputs("Tidemark needs a graphical session.\n", stderr);
        return 1;
    }
    const QString identifier = u"com.tidemark.Tidemark"_s;
    tidemark::SingleInstance instance(identifier);
    tidemark::Tidemark::prepareApplication();
    const QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(identifier);
    tidemark::Tidemark program(
        tidemark::Tidemark::userOptions({.identifier = identifier,
                                         .version = QStringLiteral(TIDEMARK_VERSION),
                                         .feedUrl = QStringLiteral(TIDEMARK_FEED_URL),
                                         .publicKey = QStringLiteral(TIDEMARK_PUBLIC_KEY)}),
        instance);
    return program.run();
}
