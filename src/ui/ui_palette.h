#pragma once

// Defines the colours and metrics that several sources use. A colour or metric of only one screen is defined at the top
// of the screen's source. Colours are packed in Dear ImGui's order (alpha, blue, green, red). Metrics are unscaled
// pixels.

#include <imgui.h>

namespace palette {

// Surfaces, from back to front.
inline constexpr ImU32 kBackground = 0xFF151414; // window and sidebar
inline constexpr ImU32 kContent = 0xFF1A1A1A;    // content area, right of the sidebar
inline constexpr ImU32 kWell = 0xFF161414;       // text fields
inline constexpr ImU32 kWellHovered = 0xFF1A1818;
inline constexpr ImU32 kCard = 0xFF1E1C1C;
inline constexpr ImU32 kPopup = 0xFF262323;
inline constexpr ImU32 kControl = 0xFF322F2F; // Dear ImGui's own buttons and highlighted menu entries
inline constexpr ImU32 kControlHovered = 0xFF3D3939;
inline constexpr ImU32 kControlHeld = 0xFF484444;
inline constexpr ImU32 kDim = 0xA0080707; // drawn over everything behind a modal popup
inline constexpr ImU32 kNone = 0x00000000;

// Lines.
inline constexpr ImU32 kBorder = 0xFF302E2E;
inline constexpr ImU32 kBorderStrong = 0xFF423F3F;
inline constexpr ImU32 kGrab = 0xFF706C6C; // scroll bars
inline constexpr ImU32 kGrabHovered = 0xFF8A8686;
inline constexpr ImU32 kGrabHeld = 0xFFA3A0A0;

// Colours of texts.
inline constexpr ImU32 kForeground = 0xFFF5F5F5;
inline constexpr ImU32 kCaret = 0xFFF4F5F5; // use it only for the caret: text_field.cpp searches for this colour
inline constexpr ImU32 kMuted = 0xFFA8A4A3;
inline constexpr ImU32 kDestructive = 0xFF7878F5;

// Greys of texts and icons, named after their lightness in percent.
inline constexpr ImU32 kGrey94 = 0xFFF0F0F0;
inline constexpr ImU32 kGrey86 = 0xFFDCDCDC;
inline constexpr ImU32 kGrey78 = 0xFFC8C8C8;
inline constexpr ImU32 kGrey71 = 0xFFB4B4B4;
inline constexpr ImU32 kGrey63 = 0xFFA0A0A0;
inline constexpr ImU32 kGrey59 = 0xFF969696;
inline constexpr ImU32 kGrey55 = 0xFF8C8C8C;
inline constexpr ImU32 kGrey51 = 0xFF828282;

// The accent colour of primary buttons, and a lighter blue that is legible as a line or as text.
inline constexpr ImU32 kPrimary = 0xFFFD6E0D;
inline constexpr ImU32 kPrimaryHovered = 0xFFD75E0B;
inline constexpr ImU32 kPrimaryHeld = 0xFFCA580A;
inline constexpr ImU32 kOnPrimary = 0xFFFFFFFF; // text on kPrimary
inline constexpr ImU32 kPrimaryLight = 0xFFFFB07A;
inline constexpr ImU32 kSelection = 0x80FD6E0D;

// Badges, indexed by UiThemeBadgeStatus.
struct BadgeColours {
    ImU32 fill, text;
};
inline constexpr BadgeColours kBadges[] = {
    {0xFF353232, 0xFFC9C6C6},
    {0xFF23361A, 0xFF9ADB86},
    {0xFF24203F, 0xFF9494FA},
    {0xFF4A2E16, 0xFFFFBC8C},
};

// Metrics.
inline constexpr float kRounding = 6.0f; // buttons, fields, rows and cards
inline constexpr float kPopupRounding = 10.0f;
inline constexpr float kTextSize = 14.0f; // Dear ImGui's own widgets
inline constexpr float kBadgeTextSize = 11.5f;
inline constexpr float kBadgeHeight = 20.0f;
inline constexpr float kBadgePadding = 9.0f;
inline constexpr float kTitleSize = 16.0f; // title of a modal popup
inline constexpr float kRingThickness = 2.0f;
inline constexpr float kRevealSeconds = 0.16f;
inline constexpr float kPopupSeconds = 0.12f;
inline constexpr float kSpinnerTurnSeconds = 1.1f;

} // namespace palette
