#pragma once

#include "platform/session/LoginItem.h"

namespace tidemark {

/// A registration that counts what is asked of it and may refuse.
class FakeLoginItem final : public LoginItem {
public:
    Status currentStatus = Status::notRegistered;
    bool refuses = false;
    int registrations = 0;
    int unregistrations = 0;

    [[nodiscard]] Status status() const override { return currentStatus; }
    [[nodiscard]] bool registerItem() override {
        ++registrations;
        if (!refuses)
            currentStatus = Status::enabled;
        return !refuses;
    }
    [[nodiscard]] bool unregisterItem() override {
        ++unregistrations;
        if (!refuses)
            currentStatus = Status::notRegistered;
        return !refuses;
    }
};

}  // namespace tidemark
