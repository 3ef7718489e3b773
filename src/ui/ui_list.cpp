#include "ui/ui_list.h"

#include <algorithm>

#include <imgui_internal.h>

#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr float kBarGap = 2.0f;    // between the rows and the bar
constexpr float kBarWidth = 12.0f; // width of the area that reacts to the mouse
constexpr float kGrabInset = 3.0f; // the drawn grab is narrower by this on each side

// Draws the scroll bar and handles the mouse on it. Dear ImGui's own bar (1.92) makes the rows narrower, and its mouse
// area is only as wide as the drawn bar.
void drawScrollbar(ImGuiWindow* list) {
    if (list->ScrollMax.y <= 0.0f) return;
    const ImRect bar(list->Pos.x + list->Size.x + uiThemePx(kBarGap), list->Pos.y,
                     list->Pos.x + list->Size.x + uiThemePx(kBarGap + kBarWidth), list->Pos.y + list->Size.y);
    const float track = bar.GetHeight();
    const float length =
        std::min(track, std::max(ImGui::GetStyle().GrabMinSize, track * track / (track + list->ScrollMax.y)));
    const ImGuiID id = list->GetID("##scrollbar");
    ImGui::ItemAdd(bar, id, nullptr, ImGuiItemFlags_NoNav);
    bool hovered = false;
    bool held = false;
    ImGui::ButtonBehavior(bar, id, &hovered, &held, ImGuiButtonFlags_NoNavFocus);

    static float heldAt = 0.0f; // distance from the grab's top to the mouse
    const float room = track - length;
    float top = bar.Min.y + room * list->Scroll.y / list->ScrollMax.y;
    if (held && room > 0.0f) {
        const float mouse = ImGui::GetIO().MousePos.y;
        if (ImGui::GetCurrentContext()->ActiveIdIsJustActivated)
            heldAt = mouse >= top && mouse < top + length ? mouse - top : length * 0.5f;
        top = std::clamp(mouse - heldAt, bar.Min.y, bar.Min.y + room);
        ImGui::SetScrollY(list, (top - bar.Min.y) / room * list->ScrollMax.y);
    }
    const float inset = uiThemePx(kGrabInset);
    uiThemeRoundedPanel(ImGui::GetWindowDrawList(), {bar.Min.x + inset, top}, {bar.Max.x - inset, top + length},
                        held      ? palette::kGrabHeld
                        : hovered ? palette::kGrabHovered
                                  : palette::kGrab,
                        bar.GetWidth() * 0.5f - inset);
}

} // namespace

void uiThemeBeginList(const char* name, ImVec2 position, ImVec2 size) {
    ImGui::SetCursorScreenPos(position);
    uiThemeJoinNavigation();
    ImGui::BeginChild(name, size, ImGuiChildFlags_None, ImGuiWindowFlags_NoBackground | ImGuiWindowFlags_NoScrollbar);
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(ImGui::GetStyle().ItemSpacing.x, 0.0f));
}

void uiThemeEndList() {
    ImGuiWindow* list = ImGui::GetCurrentWindow();
    ImGui::PopStyleVar();
    ImGui::EndChild();
    drawScrollbar(list);
}
