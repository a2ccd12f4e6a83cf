#pragma once

#include <QFile>

#include "tests/TestProgram.h"
#include "tests/preferences/PreferencesScene.h"

namespace tidemark {

/// Of RFC 8032, test 2: one byte, signed with the key of the scene.
inline const QByteArray signedArchive = "r";
inline const QByteArray archiveSignature = QByteArray::fromHex(
    "92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da"
    "085ac1e43e15996e458f3613d0f11d8c387b2eaeb4302aeeb00d291612bb0c00");

/// An appcast with one release, as AppImage and as package: `signedArchive` both.
inline QByteArray feedWith(const QByteArray& version) {
    const auto enclosure = [](const QByteArray& name) {
        return "<enclosure url=\"https://updates.example/" + name + "\" length=\"1\" sparkle:edSignature=\"" +
               archiveSignature.toBase64() + "\"/>";
    };
    return "<rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>"
           "<item><sparkle:version>" +
           version + "</sparkle:version><description>Faster.\nSmaller.</description>" +
           enclosure("Tidemark.AppImage") + enclosure("tidemark.deb") + "</item></channel></rss>";
}

/// The update window.
class UpdateScene : public PreferencesScene {
public:
    static inline const QString feed = u"/appcast.xml"_s;
    static inline const QString archive = u"/Tidemark.AppImage"_s;
    static inline const QString package = u"/tidemark.deb"_s;

    explicit UpdateScene(Build build = Build::appImage)
        : PreferencesScene(build), window(*updates.controller(), engine, bundle.version) {
        QObject::connect(updates.controller(), &Updater::presentationRequested, &window,
                         &UpdateWindow::present);
        QFile program(folder.filePath(u"Tidemark"_s));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write("old");
    }

    [[nodiscard]] QQuickView& screen() const override { return window.window(); }

    void check(const QByteArray& version) {
        http.answer(HttpMethod::get, feed, httpAnswer(200, feedWith(version)));
        updates.checkForUpdates();
        QTRY_VERIFY(updates.controller()->canCheckForUpdates());
        rest();
    }

    mutable UpdateWindow window;
};

}  // namespace tidemark
