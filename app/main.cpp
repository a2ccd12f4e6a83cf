#include <QGuiApplication>

#include "app/Tidemark.h"

int main(int argc, char** argv) {
    using namespace Qt::StringLiterals;
    const QString identifier = u"com.tidemark.Tidemark"_s;
    tidemark::SingleInstance instance(identifier);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(identifier);
    tidemark::Tidemark program(tidemark::Tidemark::userOptions(
                                   {.identifier = identifier, .version = QStringLiteral(TIDEMARK_VERSION)}),
                               instance);
    return program.run();
}
