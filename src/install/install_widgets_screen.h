#pragma once

// What the Installs and the Downloads screens draw alike. Frame thread.

#include <cstdint>

#include <imgui.h>

#include "ui/ui_theme.h"

inline constexpr ImU32 kInstallHeading = 0xFFF5F5F5;
inline constexpr ImU32 kInstallCardFill = 0xFF222020;
inline constexpr ImU32 kInstallCardOutline = 0xFF302E2E;
inline constexpr ImU32 kInstallFigures = 0xFFA0A0A0;
inline constexpr float kInstallHeaderHeight = 48.0f; // from the content's top to the first card

struct InstallBadge {
    const char* text;
    UiThemeBadgeStatus look;
};
inline constexpr InstallBadge kBadgeDownloading = {"Downloading", UiThemeBadgeStatus::Working};
inline constexpr InstallBadge kBadgeInstalling = {"Installing", UiThemeBadgeStatus::Working};
inline constexpr InstallBadge kBadgeInstalled = {"Installed", UiThemeBadgeStatus::Success};
inline constexpr InstallBadge kBadgeFailed = {"Failed", UiThemeBadgeStatus::Failure};

// The content area of the shell, filled, with its heading. Returns its top left corner.
ImVec2 drawInstallBackdrop(const char* heading);

void drawInstallCard(ImVec2 min, ImVec2 max);

// A progress bar with "1.0 MB / 2.0 MB" under it; the total reads "unknown" while it is.
void drawTransferProgress(ImVec2 barMin, ImVec2 barMax, ImVec2 textAt, std::int64_t received, std::int64_t total);
