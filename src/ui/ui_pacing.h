#pragma once

// When a frame is built and when it is shown. No window system in here: the host tells what happened, asks how long to
// wait, and hands over what a built frame would show.

#include <cstdint>
#include <span>

#include <imgui.h>

// A digest of everything that a frame puts on the screen except the pixels of its textures.
[[nodiscard]] std::uint64_t frameFingerprint(const ImDrawData& frame, std::span<const float, 4> clearColour);

// Pixels can change under equal vertices: a glyph that takes the place of another, a picture that was loaded.
[[nodiscard]] bool texturesPending(const ImDrawData& frame);

class FramePacer {
  public:
    static constexpr double kIdleWaitSeconds = 0.1; // frames collect the results of worker threads
    static constexpr int kSettleFrames = 3;         // a popup takes this many to find its size

    explicit FramePacer(double secondsPerFrame = 1.0 / 60.0)
        : secondsPerFrame_(secondsPerFrame) {}

    void noteEvent() { awake_ = kSettleFrames; } // input arrived, or the window changed
    void noteDamage();                           // the system lost what the window showed
    [[nodiscard]] bool takeDamage();             // true: whoever asks shows it again
    void setIconified(bool iconified);

    // Nothing moves: wait up to kIdleWaitSeconds for an event. Otherwise the next frame is due in secondsUntilDue,
    // events or not; that is 0 where showing a frame takes the display's own time.
    [[nodiscard]] bool idle() const { return iconified_ || awake_ == 0; }
    [[nodiscard]] double secondsUntilDue(double now) const;

    void frameStarted(double now) { lastStart_ = now; }
    [[nodiscard]] bool frameBuilt(std::uint64_t fingerprint, bool newPixels); // true: show it

  private:
    double secondsPerFrame_;
    double lastStart_ = 0.0;
    std::uint64_t shown_ = 0;
    int awake_ = kSettleFrames; // frames yet to be built without waiting
    bool damaged_ = true;
    bool iconified_ = false;
};
