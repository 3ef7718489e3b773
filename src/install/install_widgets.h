#pragma once

// Widgets that the Installs and Downloads screens share. Main thread only, inside a frame.

#include <cstdint>

#include <imgui.h>

#include "ui/ui_theme.h"

struct InstallBadge {
    const char* text;
    UiThemeBadgeStatus look;
};
inline constexpr InstallBadge kBadgeDownloading = {"Downloading", UiThemeBadgeStatus::Working};
inline constexpr InstallBadge kBadgeInstalling = {"Installing", UiThemeBadgeStatus::Working};
inline constexpr InstallBadge kBadgeInstalled = {"Installed", UiThemeBadgeStatus::Success};
inline constexpr InstallBadge kBadgeFailed = {"Failed", UiThemeBadgeStatus::Failure};

void drawInstallCard(ImVec2 min, ImVec2 max);

// Draws a progress bar and a text such as "1.0 MB / 2.0 MB". Sizes are in bytes. A total of 0 or less is shown as
// "unknown".
void drawTransferProgress(ImVec2 barMin, ImVec2 barMax, ImVec2 textAt, std::int64_t received, std::int64_t total);
