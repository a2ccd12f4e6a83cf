#include <QTemporaryDir>

#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"
#include "updates/AppImage.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

class AppImageTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyTheProgramOfTheAppImageIsPartOfIt() {
        const QTemporaryDir folder;
        const QString image = folder.filePath(u"Other.AppImage"_s);
        const QString mount = folder.filePath(u"mount"_s);
        const QString inside = mount + u"/usr/bin/tidemark"_s;
        const QString outside = folder.filePath(u"bin/tidemark"_s);
        const QString neighbour = folder.filePath(u"mount2/tidemark"_s);
        for (const QString& path : {image, inside, outside, neighbour})
            writeFile(path, {});
        QCOMPARE(runningAppImage(inside), QString());
        qputenv("APPIMAGE", image.toUtf8());
        QCOMPARE(runningAppImage(inside), QString());
        qputenv("APPDIR", mount.toUtf8());
        QCOMPARE(runningAppImage(inside), image);
        QCOMPARE(runningAppImage(outside), QString());
        QCOMPARE(runningAppImage(neighbour), QString());
        QVERIFY(QFile::remove(image));
        QCOMPARE(runningAppImage(inside), QString());
        forgetAppImage();
        QVERIFY(!qEnvironmentVariableIsSet("APPIMAGE") && !qEnvironmentVariableIsSet("APPDIR"));
    }
};

TIDEMARK_TEST(AppImageTest)
#include "AppImageTest.moc"
