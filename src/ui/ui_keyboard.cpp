#include "ui/ui_keyboard.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <imgui_internal.h>

#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

bool pressedInPopup(ImGuiKey key) {
    return !ImGui::IsWindowAppearing() && ImGui::IsWindowFocused() && ImGui::IsKeyPressed(key, false);
}

bool isModifier(ImGuiKey key) {
    return (key & ImGuiMod_Mask_) != 0 || ImGui::IsLRModKey(key);
}

// Returns the index of the first event that releases a modifier after an event that presses another key. Returns the
// size of the queue if there is no such event.
int firstLateRelease(const ImVector<ImGuiInputEvent>& queue) {
    bool pressed = false;
    for (int i = 0; i < queue.Size; ++i) {
        if (queue[i].Type != ImGuiInputEventType_Key) continue;
        const ImGuiInputEventKey& event = queue[i].Key;
        if (pressed && !event.Down && isModifier(event.Key)) return i;
        pressed = pressed || (event.Down && !isModifier(event.Key));
    }
    return queue.Size;
}

} // namespace

void uiThemeNewFrame() {
    ImVector<ImGuiInputEvent>& queue = ImGui::GetCurrentContext()->InputEventsQueue;
    const int kept = firstLateRelease(queue);
    const std::vector<ImGuiInputEvent> later(queue.begin() + kept, queue.end());
    queue.resize(kept);
    ImGui::NewFrame();
    for (const ImGuiInputEvent& event : later)
        queue.push_back(event);
}

bool uiThemeFocusShows(ImGuiID item) {
    const ImGuiContext& context = *ImGui::GetCurrentContext();
    return context.NavId == item && context.NavCursorVisible;
}

void uiThemeFocusRing(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float distance) {
    const float thickness = std::max(1.0f, std::round(uiThemePx(palette::kRingThickness)));
    const float grow = std::round(uiThemePx(distance)) + 0.5f * thickness;
    drawList->AddRect({min.x - grow, min.y - grow}, {max.x + grow, max.y + grow}, palette::kPrimaryLight,
                      std::max(0.0f, radius + grow), ImDrawFlags_None, thickness);
}

bool uiThemeFocusRingOfItem() {
    if (!uiThemeFocusShows(ImGui::GetItemID())) return false;
    uiThemeFocusRing(ImGui::GetWindowDrawList(), ImGui::GetItemRectMin(), ImGui::GetItemRectMax(),
                     ImGui::GetStyle().FrameRounding);
    return true;
}

// Sets the flag for the next BeginChild, which combines it with the flags in its argument.
void uiThemeJoinNavigation() {
    ImGuiNextWindowData& next = ImGui::GetCurrentContext()->NextWindowData;
    next.HasFlags |= ImGuiNextWindowDataFlags_HasChildFlags;
    next.ChildFlags |= ImGuiChildFlags_NavFlattened;
}

void uiThemeRecoverKeyboard() {
    const ImGuiContext& context = *ImGui::GetCurrentContext();
    const bool here = context.NavWindow && context.NavWindow->RootWindowForNav == ImGui::GetCurrentWindow();
    if (here && !context.NavIdIsAlive) ImGui::SetNavCursorVisible(false);
}

bool uiThemeMenuKeyPressed() {
    return ImGui::IsKeyPressed(ImGuiKey_Menu, false) ||
           (ImGui::GetIO().KeyShift && ImGui::IsKeyPressed(ImGuiKey_F10, false));
}

bool uiThemeConfirmKeyPressed() {
    return pressedInPopup(ImGuiKey_Enter) || pressedInPopup(ImGuiKey_KeypadEnter);
}

bool uiThemeCancelKeyPressed() {
    return pressedInPopup(ImGuiKey_Escape);
}
