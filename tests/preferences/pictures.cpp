#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <functional>

#include "tests/preferences/UpdateScene.h"

// Writes a picture of each state of the preferences: preferences-pictures FOLDER [dark]. QT_SCALE_FACTOR
// gives the scale.

namespace {

using namespace tidemark;

QString picturesFolder;

void save(const ViewUser& scene, const QString& name) {
    QTest::qWait(200);
    scene.screen().grabWindow().save(picturesFolder + u'/' + name + u".png"_s);
}

void scrollTo(const PreferencesScene& scene, qreal y) {
    for (QQuickItem* item : visibleItems(scene.screen().rootObject()))
        if (item->inherits("QQuickFlickable") && item->height() > 200)
            item->setProperty("contentY", qMin(y, item->property("contentHeight").toReal() - item->height()));
}

AppConfiguration twoAccounts() {
    return {.accounts = {PreferencesScene::account(u"Personal"_s), PreferencesScene::account(u"Work"_s)},
            .cloudflareToken = u"cfut_secret"_s,
            .launchAtLogin = true};
}

QPalette darkPalette() {
    QPalette palette(Qt::white, QColor(0x3c, 0x3c, 0x40), Qt::gray, Qt::black, Qt::darkGray,
                     QColor(0xee, 0xee, 0xf0), Qt::white, QColor(0x1f, 0x1f, 0x22), QColor(0x2b, 0x2b, 0x2e));
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    return palette;
}

void takePictures() {
    {
        PreferencesScene scene;
        scene.stored.reset();
        scene.open();
        save(scene, u"1-first-start"_s);
        scrollTo(scene, 10000);
        save(scene, u"2-first-start-below"_s);
    }
    PreferencesScene scene(Build::appImage);
    scene.stored = twoAccounts();
    scene.open();
    save(scene, u"3-two-accounts"_s);
    scene.click(u"Show Token of Personal"_s);
    save(scene, u"4-token-shown"_s);
    scene.controller.setAccountErrors({{scene.stored->accounts[1].id, u"Invalid API token (401)"_s}});
    save(scene, u"4a-token-refused"_s);
    scrollTo(scene, 10000);
    save(scene, u"5-below"_s);
    scene.click(u"Show Cloudflare API Token"_s);
    save(scene, u"6-cloudflare-shown"_s);
    scene.press(Qt::Key_Tab);
    QTest::keyPress(&scene.screen(), Qt::Key_Alt);
    scene.rest();
    save(scene, u"7-keyboard-and-mnemonics"_s);
}

void takeUnreadPicture() {
    PreferencesScene scene;
    scene.notice = u"These settings could not be saved: No space left on device"_s;
    scene.stored = twoAccounts();
    scene.stored->accounts[1].apiToken.clear();
    scene.stored->accounts[1].isTokenUnread = true;
    scene.stored->cloudflareToken.clear();
    scene.stored->isCloudflareTokenUnread = true;
    scene.open();
    save(scene, u"4b-not-saved-not-read"_s);
}

void takeWaitingPicture() {
    PreferencesScene scene;
    scene.pending = std::make_shared<QPromise<std::optional<AppConfiguration>>>();
    scene.pending->start();
    scene.controller.showWindow();
    QTest::qWait(500);
    save(scene, u"0-waiting"_s);
    scene.pending->addResult(std::nullopt);
    scene.pending->finish();
    QTest::qWait(100);
}

void takeUpdatePictures() {
    UpdateScene scene;
    scene.http.answer(HttpMethod::get, UpdateScene::feed, httpAnswer(500));
    scene.http.hold(HttpMethod::get, UpdateScene::feed);
    scene.updates.checkForUpdates();
    save(scene, u"8-update-checking"_s);
    scene.http.release(HttpMethod::get, UpdateScene::feed);
    save(scene, u"9-update-failed"_s);
    scene.check("1.4.2");
    save(scene, u"10-update-none"_s);
    scene.check("1.5");
    save(scene, u"11-update-available"_s);
    scene.http.answer(HttpMethod::get, UpdateScene::archive, httpAnswer(200, "x"));
    scene.http.hold(HttpMethod::get, UpdateScene::archive);
    scene.click(u"Install"_s);
    save(scene, u"12-update-downloading"_s);
    scene.http.release(HttpMethod::get, UpdateScene::archive);
    save(scene, u"13-update-refused"_s);
    scene.check("1.5");
    scene.http.answer(HttpMethod::get, UpdateScene::archive, httpAnswer(200, signedArchive));
    scene.click(u"Install"_s);
    QTest::qWait(500);
    save(scene, u"14-update-installed"_s);

    UpdateScene packaged(Build::package);
    packaged.http.answer(HttpMethod::get, UpdateScene::package, httpAnswer(200, signedArchive));
    packaged.check("1.5");
    packaged.click(u"Install"_s);
    QTest::qWait(500);
    save(packaged, u"15-update-handed-over"_s);
}

}  // namespace

int main(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    if (argc < 2)
        return 2;
    picturesFolder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(picturesFolder);
    QAccessible::setActive(true);
    if (argc > 2)
        QGuiApplication::setPalette(darkPalette());
    takeWaitingPicture();
    takePictures();
    takeUnreadPicture();
    takeUpdatePictures();
    return 0;
}
