#pragma once

#include <QPromise>
#include <QQmlEngine>
#include <QTemporaryDir>

#include "preferences/PreferencesWindowController.h"
#include "preferences/UpdateWindow.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"
#include "tests/fakes/ViewUser.h"

namespace tidemark {

using namespace Qt::StringLiterals;

/// With updates: as an AppImage, or from a package.
enum class Build : quint8 { withoutUpdates, appImage, package };

/// The preferences of a user whose configuration is in `stored`.
class PreferencesScene : public ViewUser {
public:
    inline static const QString personalToken = u"Token of Personal"_s;

    explicit PreferencesScene(Build build = Build::withoutUpdates)
        : form{.appImagePath = build == Build::package ? QString() : folder.filePath(u"Tidemark"_s),
               .cacheFolder = folder.filePath(u"cache"_s)},
          bundle{.identifier = u"com.tidemark.Test"_s,
                 .version = u"1.4.2"_s,
                 .feedUrl =
                     build != Build::withoutUpdates ? u"https://updates.example/appcast.xml"_s : QString(),
                 .publicKey = u"PUAXw+hDiVqStwqnTRt+vJyYLM8uxJaMwM1V8Sr0Zgw="_s} {
        controller.onSave = [this](const AppConfiguration& configuration) { saved.append(configuration); };
    }

    [[nodiscard]] QQuickView& screen() const override { return controller.window(); }

    [[nodiscard]] static VercelAccount account(const QString& name, const QString& token = u"vcp_secret"_s) {
        return {.id = u"id of "_s + name, .name = name, .teamId = u"team_"_s + name, .apiToken = token};
    }

    /// Lets the user open the preferences.
    void open() {
        controller.showWindow();
        settle();
        QVERIFY(QTest::qWaitForWindowActive(&controller.window()));
        rest();
    }

    /// Scrolls there, and clicks.
    void reach(QQuickItem* item) const {
        QVERIFY(item);
        item->forceActiveFocus();
        QTRY_VERIFY(isInSight(item));
        click(item);
    }
    /// Whether nothing of it is scrolled away.
    [[nodiscard]] static bool isInSight(QQuickItem* item) {
        const QQuickItem* area = item->parentItem();
        while (area && !area->inherits("QQuickFlickable"))
            area = area->parentItem();
        return !area || area->boundingRect().contains(item->mapRectToItem(area, item->boundingRect()));
    }
    [[nodiscard]] QQuickItem* tokenField(const QString& name) const {
        return see(name, QAccessible::EditableText);
    }

    QTemporaryDir folder;
    FakeHttpClient http;
    ManualClock clock;
    FakeWorkspace workspace;
    InstalledForm form;
    Bundle bundle;
    UpdateController updates{bundle, [this] {
                                 return std::make_unique<Updater>(
                                     Updater::Services{.http = http,
                                                       .clock = clock,
                                                       .workspace = workspace,
                                                       .bundle = bundle,
                                                       .installedForm = form,
                                                       .settingsPath = folder.filePath(u"updates.ini"_s)});
                             }};
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> load() const {
        if (pending)
            return pending->future();
        QPromise<std::optional<AppConfiguration>> promise;
        promise.start();
        promise.addResult(stored);
        promise.finish();
        return promise.future();
    }

    QQmlEngine engine;
    std::optional<AppConfiguration> stored =
        AppConfiguration{.accounts = {account(u"Personal"_s), account(u"Work"_s)},
                         .cloudflareToken = u"cfut"_s,
                         .pollingIntervalSeconds = 50,
                         .launchAtLogin = true,
                         .soundEnabled = false};
    /// While the keyring waits for its user.
    std::shared_ptr<QPromise<std::optional<AppConfiguration>>> pending;
    QString notice;
    QList<AppConfiguration> saved;
    QStringList pages;
    mutable PreferencesWindowController controller{
        {.engine = engine,
         .load = [this] { return load(); },
         .notice = [this] { return notice; },
         .makeUpdates = [this] { return std::make_unique<UpdatesSection>(updates, clock); },
         .onOpenVercelTokens = [this] { pages.append(u"vercel"_s); },
         .onOpenCloudflareTokens = [this] { pages.append(u"cloudflare"_s); }}};
};

}  // namespace tidemark
