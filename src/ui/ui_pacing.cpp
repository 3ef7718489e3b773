#include "ui/ui_pacing.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace {

class Digest {
  public:
    void add(const void* bytes, std::size_t size) {
        const std::size_t part = std::hash<std::string_view>{}({static_cast<const char*>(bytes), size});
        value_ = (value_ ^ part) * 0x9E3779B97F4A7C15u;
        value_ ^= value_ >> 29;
    }
    template<typename T>
    void add(const T& value) {
        add(&value, sizeof(T)); // NOLINT(bugprone-sizeof-expression): digests of pointers use their addresses
    }
    template<typename T>
    void add(const ImVector<T>& values) {
        add(values.Size);
        if (values.Size > 0) add(values.Data, static_cast<std::size_t>(values.size_in_bytes()));
    }
    [[nodiscard]] std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 0;
};

} // namespace

std::uint64_t frameFingerprint(const ImDrawData& frame, std::span<const float, 4> clearColour) {
    Digest digest;
    digest.add(clearColour.data(), clearColour.size_bytes());
    digest.add(frame.DisplayPos);
    digest.add(frame.DisplaySize);
    digest.add(frame.FramebufferScale);
    for (const ImDrawList* list : frame.CmdLists) {
        digest.add(list->VtxBuffer);
        digest.add(list->IdxBuffer);
        for (const ImDrawCmd& command : list->CmdBuffer) {
            digest.add(command.ClipRect);
            digest.add(command.TexRef._TexData); // needed because _TexID is set only when the texture is uploaded
            digest.add(command.TexRef._TexID);
            digest.add(command.VtxOffset);
            digest.add(command.IdxOffset);
            digest.add(command.ElemCount);
        }
    }
    return digest.value();
}

bool texturesPending(const ImDrawData& frame) {
    return frame.Textures && std::ranges::any_of(*frame.Textures, [](const ImTextureData* texture) {
               return texture->Status != ImTextureStatus_OK && texture->Status != ImTextureStatus_Destroyed;
           });
}

void FramePacer::noteDamage() {
    damaged_ = true;
    noteEvent();
}

bool FramePacer::takeDamage() {
    return std::exchange(damaged_, false);
}

void FramePacer::setIconified(bool iconified) {
    if (iconified != iconified_) noteDamage(); // the window system does not keep the content of an iconified window
    iconified_ = iconified;
}

float FramePacer::frameStarted(double now) {
    const double since = now - std::exchange(lastStart_, now);
    return static_cast<float>(std::max(since, 1e-5)); // Dear ImGui requires a positive time step
}

double FramePacer::secondsUntilDue(double now) const {
    return std::clamp(lastStart_ + secondsPerFrame_ - now, 0.0, secondsPerFrame_);
}

bool FramePacer::frameBuilt(std::uint64_t fingerprint, bool newPixels) {
    const bool changed = damaged_ || newPixels || fingerprint != shown_;
    if (changed) {
        noteEvent();
    } else if (awake_ > 0) {
        --awake_;
    }
    if (!changed || iconified_) return false;
    shown_ = fingerprint;
    damaged_ = false;
    return true;
}
