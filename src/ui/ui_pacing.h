#pragma once

// Decides when a frame is built and whether it is presented. Independent of the window system: the host reports events,
// asks how long to wait, and passes a digest of every built frame. Times are seconds of one monotonic clock. Main
// thread only.

#include <cstdint>
#include <span>

#include <imgui.h>

// A digest of everything that a frame puts on screen except the pixels of its textures.
[[nodiscard]] std::uint64_t frameFingerprint(const ImDrawData& frame, std::span<const float, 4> clearColour);

// True if a texture waits for an update. Its pixels can change while the vertices stay equal, for example when a
// picture has been loaded.
[[nodiscard]] bool texturesPending(const ImDrawData& frame);

class FramePacer {
  public:
    static constexpr double kIdleWaitSeconds = 1.0;  // what changes on disk shows within this time
    static constexpr double kTimerWaitSeconds = 0.1; // while Dear ImGui's own timers run
    static constexpr int kSettleFrames = 3;          // Dear ImGui 1.92 needs up to this many to size a popup

    explicit FramePacer(double secondsPerFrame = 1.0 / 60.0)
        : secondsPerFrame_(secondsPerFrame) {}

    void noteEvent() { awake_ = kSettleFrames; } // input arrived, or the window changed
    void noteDamage();                           // the window system lost the window's content
    [[nodiscard]] bool takeDamage();             // true: the caller must repaint; clears the damage
    void setIconified(bool iconified);

    // Idle: wait up to idleWaitSeconds for an event. Otherwise build the next frame in secondsUntilDue, with or without
    // events. That is 0 if presenting has already waited for the display.
    [[nodiscard]] bool idle() const { return iconified_ || awake_ == 0; }
    [[nodiscard]] bool hasNoEvents() const { return awake_ == 0; } // since the screen has settled
    [[nodiscard]] double idleWaitSeconds() const { return timersRun_ ? kTimerWaitSeconds : kIdleWaitSeconds; }
    [[nodiscard]] double secondsUntilDue(double now) const;

    void setTimersRun(bool run) { timersRun_ = run; } // a caret blinks, a tooltip waits, a button is held

    float frameStarted(double now); // returns the seconds since the previous frame
    [[nodiscard]] bool frameBuilt(std::uint64_t fingerprint, bool newPixels); // true: present it

  private:
    double secondsPerFrame_;
    double lastStart_ = 0.0;
    std::uint64_t shown_ = 0;
    int awake_ = kSettleFrames; // frames still to be built without waiting
    bool damaged_ = true;
    bool iconified_ = false;
    bool timersRun_ = false;
};
