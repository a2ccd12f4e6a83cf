#include <QGuiApplication>

#include "app/Tidemark.h"

int main(int argc, char* argv[]) {
    using namespace Qt::StringLiterals;
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(u"com.tidemark.Tidemark"_s);
    tidemark::Tidemark program(tidemark::Tidemark::userOptions(
        {.identifier = u"com.tidemark.Tidemark"_s, .version = QStringLiteral(TIDEMARK_VERSION)}));
    return program.run(application);
}
