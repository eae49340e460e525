#pragma once

#include "shell/services/ChosenPhotographs.h"

#include <functional>

class BrowserPane;
class PBAppDelegate;

/// What is chosen in the view in force. Main thread.
class WindowChoice final : public ChosenPhotographs {
public:
    using Focus = std::function<std::shared_ptr<PBImageFileItem>()>;

    /// The parts outlive this object.
    WindowChoice(const PBAppDelegate& delegate, const BrowserPane& browserPane)
        : _delegate(delegate), _browserPane(browserPane) {}

    /// The large view answers for itself from now on; nullptr stands for no photograph.
    void setFocusOfLargeView(Focus focus) { _focusOfLargeView = std::move(focus); }

    [[nodiscard]] PBImageFileList all() const override;
    [[nodiscard]] std::shared_ptr<PBImageFileItem> first() const override;

private:
    [[nodiscard]] bool isLargeView() const;

    const PBAppDelegate& _delegate;
    const BrowserPane& _browserPane;
    Focus _focusOfLargeView;
};
