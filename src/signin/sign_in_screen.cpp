// Draws the sign-in screen: a panel with the welcome text and either the "Sign in" button or a spinner with "Cancel",
// and a picture to the right of the panel.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>

#include <imgui_internal.h>

#include "shell/launcher_app.h"
#include "shell/widgets.h"
#include "signin/picture_crop.h"
#include "signin/picture_file.h"
#include "system/operating_system.h"
#include "system/path_text.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kTitle = "Welcome to VOLO Launcher";
constexpr const char* kSubtitle = "Manage all your projects and editor installations in one app.";

constexpr float kPanelShare = 0.4f; // of the window's width
constexpr float kMarginShare = 0.16f;
constexpr float kMinMargin = 56.0f;
constexpr float kMaxColumn = 320.0f;
constexpr float kTextTopShare = 0.44f; // of the free height: slightly above the middle
constexpr float kLineGap = 4.0f;       // in pixels at every scale
constexpr float kSubtitleGap = 16.0f;
constexpr float kControlHeight = 44.0f;
constexpr float kSignInGap = 24.0f;
constexpr float kErrorGap = 12.0f;
constexpr float kBusyHeight = 140.0f;
constexpr float kSpinnerDrop = 36.0f;
constexpr float kSpinnerRadius = 18.0f;
constexpr float kBusyTextDrop = 28.0f;
constexpr float kCancelGap = 20.0f;
constexpr float kCaptionInset = 72.0f;
constexpr float kCaptionAboveBottom = 68.0f;
constexpr float kCaptionPitch = 24.0f;
constexpr float kSupportAboveBottom = 64.0f;

constexpr ImU32 kPictureShade = IM_COL32(0, 0, 0, 0x28);
constexpr ImU32 kCaption = IM_COL32(0xFA, 0xFA, 0xFA, 0xF5);
constexpr ImU32 kSubcaption = IM_COL32(0xBE, 0xBE, 0xC3, 0xDC);

constexpr std::chrono::milliseconds kPictureWait{2}; // the longest time that a frame waits for the decoder

struct Column {
    float left, width;
};

void drawRightAligned(ImDrawList* drawList, ImFont* font, float right, float top, ImU32 colour, const char* text) {
    uiThemeText(drawList, font, {right - uiThemeTextSize(font, text).x, top}, colour, text);
}

void drawPicture(ImDrawList* drawList, ImTextureData* picture, ImVec2 min, ImVec2 max) {
    const PictureCrop crop = cropPicture(max.x - min.x, max.y - min.y, static_cast<float>(picture->Width),
                                         static_cast<float>(picture->Height));
    const float rounding = uiThemeWindowRounding();
    drawList->AddImageRounded(picture->GetTexRef(), min, max, {crop.left, crop.top}, {crop.right, crop.bottom},
                              IM_COL32_WHITE, rounding, ImDrawFlags_RoundCornersBottomRight);
    drawList->AddRectFilled(min, max, kPictureShade, rounding, ImDrawFlags_RoundCornersBottomRight);
    const float right = max.x - uiThemePx(kCaptionInset), top = max.y - uiThemePx(kCaptionAboveBottom);
    drawRightAligned(drawList, uiThemeFont(20.0f), right, top, kCaption, "Cholecystectomy");
    drawRightAligned(drawList, uiThemeFont(15.0f), right, top + uiThemePx(kCaptionPitch), kSubcaption,
                     "Made with VOLO");
}

// Draws "Support" with an arrow at the bottom of the panel. The label becomes brighter under the pointer. A click on
// it does nothing.
void drawSupportLabel(ImDrawList* drawList, float panelLeft, float panelWidth, float windowBottom) {
    constexpr float kArrowThickness = 1.6f; // in pixels at every scale
    ImFont* font = uiThemeFont(16.0f);
    const char* label = "Support";
    const ImVec2 text = uiThemeTextSize(font, label);
    const float groupWidth = text.x + uiThemePx(6.0f) + uiThemePx(7.0f);
    const ImVec2 min(panelLeft + (panelWidth - groupWidth) * 0.5f, windowBottom - uiThemePx(kSupportAboveBottom));
    const ImVec2 grow(uiThemePx(6.0f), uiThemePx(4.0f));
    const ImVec2 hitMin = min - grow, hitMax = min + ImVec2(groupWidth, text.y) + grow;
    const bool hovered = ImRect(hitMin, hitMax).Contains(ImGui::GetIO().MousePos);
    if (hovered) ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);
    const ImU32 colour = hovered ? uiThemeForeground() : uiThemeMutedForeground();

    uiThemeText(drawList, font, min, colour, label);
    const ImVec2 foot(min.x + text.x + uiThemePx(6.0f), min.y + text.y * 0.5f + uiThemePx(2.0f));
    const ImVec2 tip = foot + ImVec2(uiThemePx(7.0f), -uiThemePx(7.0f));
    drawList->AddLine(foot, tip, colour, kArrowThickness);
    drawList->AddLine(tip, tip - ImVec2(uiThemePx(5.0f), 0.0f), colour, kArrowThickness);
    drawList->AddLine(tip, tip + ImVec2(0.0f, uiThemePx(5.0f)), colour, kArrowThickness);
}

// True if the user pressed Enter. Enter presses the screen's only button even if the button does not have the focus.
bool enterPressed() {
    return ImGui::Shortcut(ImGuiKey_Enter) || ImGui::Shortcut(ImGuiKey_KeypadEnter);
}

void drawSignedOutControls(ImDrawList* drawList, SignInFlow& signIn, Column column, float top) {
    const float buttonTop = top + uiThemePx(kSignInGap);
    if (drawPrimaryButton("Sign in", {column.left, buttonTop}, {column.width, uiThemePx(kControlHeight)}, 16.5f) ||
        enterPressed()) {
        signIn.startSignIn();
    }
    if (signIn.errorMessage.empty()) return; // check after startSignIn, which may just have failed
    uiThemeTextWrapped(drawList, uiThemeFont(13.0f),
                       {column.left, buttonTop + uiThemePx(kControlHeight) + uiThemePx(kErrorGap)},
                       uiThemeDestructive(), signIn.errorMessage, column.width, kLineGap);
    copyOnCtrlC(signIn.errorMessage);
}

void drawSigningInControls(ImDrawList* drawList, SignInFlow& signIn, Column column, float top, float clock) {
    constexpr const char* kWaiting = "Finish signing in in your browser.";
    const float middle = column.left + column.width * 0.5f;
    const float spinnerY = top + uiThemePx(kSpinnerDrop);
    uiThemeSpinner(drawList, {middle, spinnerY}, uiThemePx(kSpinnerRadius), clock, uiThemeMutedForeground());
    ImFont* font = uiThemeFont(16.0f);
    const ImVec2 text = uiThemeTextSize(font, kWaiting, column.width);
    const float textTop = spinnerY + uiThemePx(kBusyTextDrop);
    uiThemeTextWrapped(drawList, font, {middle - text.x * 0.5f, textTop}, uiThemeMutedForeground(), kWaiting,
                       column.width, kLineGap);
    copyOnCtrlC(signIn.browserAddress());
    if (drawSecondaryButton(kCancelLabel, {column.left, textTop + text.y + uiThemePx(kCancelGap)},
                            {column.width, uiThemePx(kControlHeight)}, 15.0f) ||
        enterPressed() || ImGui::Shortcut(ImGuiKey_Escape)) {
        signIn.cancelSignIn();
    }
}

} // namespace

void LauncherApp::drawSignInScreen() {
    if (!backgroundLoadTried && ImGui::GetFrameCount() > 1) { // not in the first frame: show the window early
        backgroundLoadTried = true;
        loadBackgroundTexture();
    }
    takeBackgroundTexture();
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 min = ImGui::GetWindowPos(), size = ImGui::GetWindowSize(), max = min + size;
    const float panelWidth = std::round(kPanelShare * size.x), panelRight = min.x + panelWidth;
    drawList->AddRectFilled(min, {panelRight, max.y}, uiThemeCard(), uiThemeWindowRounding(),
                            ImDrawFlags_RoundCornersBottomLeft);
    drawList->AddLine({panelRight, min.y}, {panelRight, max.y}, uiThemeBorder(), 1.0f);
    if (backgroundTexture != nullptr) drawPicture(drawList, backgroundTexture, {panelRight, min.y}, max);

    const float margin = std::max(kMarginShare * panelWidth, uiThemePx(kMinMargin));
    Column column;
    column.width = std::min(panelWidth - 2.0f * margin, uiThemePx(kMaxColumn));
    column.left = min.x + (panelWidth - column.width) * 0.5f;

    static float spinnerClock = 0.0f;
    spinnerClock += ImGui::GetIO().DeltaTime;
    const bool signedOut = signIn->state == SignInState::SignedOut;
    ImFont* titleFont = uiThemeFont(28.0f);
    ImFont* subtitleFont = uiThemeFont(16.0f);
    const float titleHeight = uiThemeTextSize(titleFont, kTitle, column.width).y;
    const float subtitleHeight = uiThemeTextSize(subtitleFont, kSubtitle, column.width).y;
    const float controlsHeight = signedOut ? uiThemePx(kControlHeight) + uiThemePx(kSignInGap) : uiThemePx(kBusyHeight);
    const float total = titleHeight + uiThemePx(kSubtitleGap) + subtitleHeight + controlsHeight;

    float y = min.y + kTextTopShare * (size.y - total);
    uiThemeTextWrapped(drawList, titleFont, {column.left, y}, uiThemeForeground(), kTitle, column.width, kLineGap);
    y += titleHeight + uiThemePx(kSubtitleGap);
    uiThemeTextWrapped(drawList, subtitleFont, {column.left, y}, uiThemeMutedForeground(), kSubtitle, column.width,
                       kLineGap);
    y += subtitleHeight;
    if (signedOut) {
        drawSignedOutControls(drawList, *signIn, column, y);
    } else {
        drawSigningInControls(drawList, *signIn, column, y, spinnerClock);
    }
    drawSupportLabel(drawList, min.x, panelWidth, max.y);
}

// Decodes the picture on another thread, so that the first frames do not wait for it. If the system cannot create a
// thread, takeBackgroundTexture decodes it on the main thread.
void LauncherApp::loadBackgroundTexture() {
    const std::string directory = launcherDirectory();
    if (directory.empty()) return;
    decodingBackground = std::async(std::launch::async | std::launch::deferred, decodePictureFile,
                                    pathText(std::filesystem::path(directory) / "background.png"));
}

void LauncherApp::takeBackgroundTexture() {
    if (!decodingBackground.valid() || decodingBackground.wait_for(kPictureWait) == std::future_status::timeout) return;
    const DecodedPicture picture = decodingBackground.get();
    if (!picture.pixels) return; // without a picture the right side stays empty
    backgroundTexture = IM_NEW(ImTextureData)();
    backgroundTexture->Create(ImTextureFormat_RGBA32, picture.width, picture.height);
    std::memcpy(backgroundTexture->GetPixels(), picture.pixels.get(),
                static_cast<std::size_t>(backgroundTexture->GetSizeInBytes()));
    backgroundTexture->SetStatus(ImTextureStatus_WantCreate);
    ImGui::RegisterUserTexture(backgroundTexture);
}
