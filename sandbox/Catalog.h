#pragma once

#include <QString>
#include <QStringList>

#include "sandbox/Random.h"
#include "sandbox/Records.h"

namespace tidemark::sandbox::catalog {

/// The domain under which the hosting service serves every deployment.
inline constexpr QLatin1StringView defaultSuffix{".vercel.app"};

/// Name and slug of an account; any number of them are distinct.
struct AccountName {
    QString name;
    QString slug;
};
[[nodiscard]] AccountName accountName(quint64 index);

/// A project's name; the first dozen are those of a small company, any number of them are distinct.
[[nodiscard]] QString projectName(quint64 index);

/// A commit as developers write them; now and then with a body, an emoji or another script. Turns in a row
/// have different messages. A production commit is on the main branch.
[[nodiscard]] Commit commit(Random& random, bool production, quint64 turn);

/// A deployment of the project that has just been queued.
[[nodiscard]] Deployment deployment(Random& random, const Project& project, const SandboxAccount& account,
                                    qint64 created, bool production, quint64 turn);

/// The hosts that a ready deployment is reached under.
[[nodiscard]] QStringList aliases(const Project& project, const SandboxAccount& account,
                                  const Deployment& deployment);

/// A branch as it appears in a host name: "feat/New_menu" gives "feat-new-menu".
[[nodiscard]] QString hostLabel(const QString& text);

}  // namespace tidemark::sandbox::catalog
