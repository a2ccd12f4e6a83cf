#pragma once

#include <QHash>

#include "platform/tray/StatusItem.h"

namespace tidemark {

/// A panel that only remembers what its items show.
class FakeStatusBar final : public StatusBar {
public:
    struct Shown {
        StatusImage image;
        QColor dot;
        QString label;
        QString toolTip;
        StatusItem::Action action;
        Menu menu;
        int imageCount = 0;
    };

    /// Whether there is a panel to ask; without one no item can be made.
    bool isAvailable = true;
    /// Whether a panel has shown the items.
    bool isShown = true;
    /// The items that exist, by their ids.
    QHash<QString, Shown> items;

    [[nodiscard]] std::unique_ptr<StatusItem> createStatusItem(const QString& id) override {
        if (!isAvailable)
            return nullptr;
        return std::make_unique<Item>(*this, id);
    }
    [[nodiscard]] bool hasHost() const override { return isShown; }

private:
    class Item final : public StatusItem {
    public:
        Item(FakeStatusBar& bar, const QString& id) : m_bar(bar), m_id(id) { m_bar.items.insert(id, {}); }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;
        ~Item() override { m_bar.items.remove(m_id); }

        void setImage(const StatusImage& image) override {
            shown().image = image;
            ++shown().imageCount;
        }
        void setDot(const QColor& color) override { shown().dot = color; }
        void setLabel(const QString& label) override { shown().label = label; }
        void setToolTip(const QString& toolTip) override { shown().toolTip = toolTip; }
        void setAction(Action action) override { shown().action = std::move(action); }
        void setMenu(const Menu& menu) override { shown().menu = menu; }

    private:
        Shown& shown() { return m_bar.items[m_id]; }

        FakeStatusBar& m_bar;
        QString m_id;
    };
};

}  // namespace tidemark
