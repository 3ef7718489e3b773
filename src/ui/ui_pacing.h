#pragma once

// Decides when a frame is built and whether it is presented. It does not use the window system: the host reports
// events, queries how long to wait, and passes a digest of each frame. Times are in seconds of one monotonic clock.
// Main thread only.

#include <cstdint>
#include <span>

#include <imgui.h>

// Returns a digest of everything in a frame except the pixels of its textures. Frames with equal digests look the same
// if no texture has changed.
[[nodiscard]] std::uint64_t frameFingerprint(const ImDrawData& frame, std::span<const float, 4> clearColour);

// True if a texture waits for an update. Then the frame may look different although its digest is equal, for example
// after a picture was loaded.
[[nodiscard]] bool texturesPending(const ImDrawData& frame);

class FramePacer {
  public:
    static constexpr double kIdleWaitSeconds = 1.0;  // changes on disk become visible within this time
    static constexpr double kTimerWaitSeconds = 0.1; // used while Dear ImGui's own timers run
    static constexpr int kSettleFrames = 3;          // Dear ImGui 1.92 needs up to 3 frames to size a popup

    explicit FramePacer(double secondsPerFrame = 1.0 / 60.0)
        : secondsPerFrame_(secondsPerFrame) {}

    void noteEvent() { awake_ = kSettleFrames; } // call it after input or a change of the window
    void noteDamage();                           // call it if the window's content was lost
    [[nodiscard]] bool takeDamage();             // returns true if there is damage, and clears it
    void setIconified(bool iconified);

    // If idle() is true, wait up to idleWaitSeconds for an event. Otherwise build the next frame after secondsUntilDue,
    // with or without events. secondsUntilDue is 0 if vertical sync has already waited long enough.
    [[nodiscard]] bool idle() const { return iconified_ || awake_ == 0; }
    [[nodiscard]] bool hasNoEvents() const { return awake_ == 0; } // no event since the frames stopped changing
    [[nodiscard]] double idleWaitSeconds() const { return timersRun_ ? kTimerWaitSeconds : kIdleWaitSeconds; }
    [[nodiscard]] double secondsUntilDue(double now) const;

    [[nodiscard]] bool timersRun() const { return timersRun_; }
    void setTimersRun(bool run) { timersRun_ = run; } // for a blinking caret, a tooltip's delay, a held button

    float frameStarted(double now); // returns the seconds since the previous frame
    [[nodiscard]] bool frameBuilt(std::uint64_t fingerprint, bool newPixels); // true: present it

  private:
    double secondsPerFrame_;
    double lastStart_ = 0.0;
    std::uint64_t shown_ = 0;
    int awake_ = kSettleFrames; // number of frames to build without an idle wait
    bool damaged_ = true;
    bool iconified_ = false;
    bool timersRun_ = false;
};
