#pragma once

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTemporaryDir>

#include "popover/PopoverModel.h"
#include "popover/PopoverView.h"
#include "popover/ProjectRowModel.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A state with projects, as the engine would have written it, and the popover on it.
class Scene {
public:
    Scene() {
        state.setRedeployHandler([](const QString&) -> QCoro::Task<> { co_return; });
        model.setActive(true);
    }

    /// A deployment that was pushed so long ago.
    [[nodiscard]] Deployment deployment(const QString& deploymentState, std::chrono::seconds age) const {
        const qint64 created =
            std::chrono::duration_cast<std::chrono::milliseconds>((clock.now() - age).time_since_epoch())
                .count();
        return {.id = u"dpl"_s,
                .name = u"name"_s,
                .url = u"build-1.vercel.app"_s,
                .created = created,
                .ready = created + 83000,
                .state = deploymentState,
                .target = u"production"_s,
                .inspectorUrl = u"https://vercel.example/inspect"_s,
                .meta = DeploymentMeta{.githubCommitMessage = u"Round the corners of the invoice table"_s,
                                       .githubCommitRef = u"main"_s,
                                       .githubCommitSha = u"abc"_s}};
    }

    /// Adds tracked projects; ids and names are the same.
    void track(const QStringList& names) {
        QList<VercelProject> projects = state.allProjects();
        for (const QString& name : names)
            projects.append({.id = name, .name = name, .accountId = u"account"_s});
        state.integrateProjects(projects, u"account"_s);
    }

    /// What a successful poll writes.
    void poll(const QString& projectId, const QList<Deployment>& deployments) {
        state.setLastCheckedAt(projectId, clock.now());
        state.removeError(projectId);
        if (deployments.isEmpty()) {
            state.insertEmptyProject(projectId);
            return;
        }
        state.setDeployment(projectId, deployments.first());
        state.setRecentDeployments(projectId, deployments);
    }

    /// Lets the popover follow.
    static void settle() { ManualClock::settle(); }

    /// The row of a project.
    [[nodiscard]] ProjectRow projectRow(const QString& projectId = u"site"_s) const {
        return ProjectRow::of(state, projectId, clock.now());
    }

    QTemporaryDir folder;
    ManualClock clock;
    UserDefaults defaults{folder.filePath(u"defaults.ini"_s)};
    AppState state{defaults};
    FakeWorkspace workspace;
    int preferencesOpened = 0;
    int dashboardOpened = 0;
    int quits = 0;
    int analyticsDashboardOpened = 0;
    /// What loads were asked for, and whether the latest has been stopped.
    QList<AnalyticsReload> loads;
    std::stop_token latestLoad;
    PopoverModel model{
        state,
        clock,
        workspace,
        u"1.4.2"_s,
        {.onOpenPreferences = [this] { ++preferencesOpened; },
         .onOpenDashboard = [this] { ++dashboardOpened; },
         .onQuit = [this] { ++quits; },
         .onOpenAnalyticsDashboard = [this] { ++analyticsDashboardOpened; },
         .loadAnalytics = [this](AnalyticsReload reload, std::stop_token stop) -> QCoro::Task<> {
             loads.append(reload);
             latestLoad = stop;
             co_return;
         }}};
};

/// A row as a view has it.
class RowModel : public ProjectRowModel {
public:
    RowModel(PopoverModel& popover, const QString& projectId) {
        setPopover(&popover);
        setRowId(projectId);
    }
};

[[nodiscard]] inline QString hex(const QColor& color) {
    return color.name(color.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
}

/// A popover on the screen.
class ShownScene : public Scene {
public:
    void show() {
        view = std::make_unique<PopoverView>(model, engine);
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        settle();
    }

    QQmlEngine engine;
    std::unique_ptr<PopoverView> view;
};

}  // namespace tidemark
