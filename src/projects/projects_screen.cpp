// Draws the Projects screen: computes its layout, and draws its title line with search box and buttons, and its notice.
// projects_table_screen.cpp draws the table.

#include "projects/projects_screen.h"

#include <algorithm>
#include <array>
#include <utility>

#include <imgui_internal.h>

#include "projects/project_order.h"
#include "projects/project_search.h"
#include "shell/shell_layout.h"
#include "shell/widgets.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr char kSearchField[] = "##ProjectSearch";

constexpr ImU32 kSearchFill = 0xFF141414;
constexpr ImU32 kSearchIcon = palette::kGrey51;
constexpr ImU32 kSearchBorder = 0xFF303030;
constexpr ImU32 kSearchBorderHovered = 0xFF464141;
constexpr ImU32 kSearchBorderActive = 0xFF5F5A5A;
constexpr ImU32 kClearGlyph = palette::kGrey55;
constexpr ImU32 kClearGlyphHovered = palette::kGrey86;
constexpr ImU32 kNoticeFill = 0xFF0F2D3C;
constexpr ImU32 kNoticeOutline = 0xFF2882B4;
constexpr ImU32 kNoticeText = kAmber;

constexpr float kControlHeight = 32.0f;
constexpr float kControlGap = 8.0f;
constexpr float kNewButtonWidth = 126.0f;
constexpr float kAddButtonWidth = 148.0f;
constexpr float kSearchWidth = 210.0f;
constexpr float kSearchTextLeft = 30.0f;
constexpr float kBelowTitleLine = 16.0f;
constexpr float kNoticeHeight = 32.0f;
constexpr float kNoticePitch = 40.0f;
constexpr float kHeaderHeight = 30.0f;
constexpr float kListGap = 4.0f;
constexpr float kListBottomGap = 12.0f;

void drawSearchIcon(ImDrawList* drawList, ImVec2 middleLeft) {
    const float length = uiThemePx(5.5f);
    const ImVec2 at = middleLeft + ImVec2(uiThemePx(15.0f), 0.0f);
    const ImVec2 centre = at - ImVec2(0.25f, 0.25f) * length;
    drawList->AddCircle(centre, 0.65f * length, kSearchIcon, 16, 1.3f);
    drawList->AddLine(centre + ImVec2(0.45f, 0.45f) * length, at + ImVec2(0.85f, 0.85f) * length, kSearchIcon, 1.6f);
}

void drawClearGlyph(ImDrawList* drawList, ImVec2 middleRight, bool hovered) {
    const ImVec2 centre = middleRight - ImVec2(uiThemePx(15.0f), 0.0f);
    const float arm = uiThemePx(3.5f);
    const ImU32 colour = hovered ? kClearGlyphHovered : kClearGlyph;
    drawList->AddLine(centre - ImVec2(arm, arm), centre + ImVec2(arm, arm), colour, 1.2f);
    drawList->AddLine(centre + ImVec2(-arm, arm), centre + ImVec2(arm, -arm), colour, 1.2f);
}

void drawNotice(ImVec2 min, ImVec2 max, const std::string& text) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawList->AddRectFilled(min, max, kNoticeFill, uiThemePx(palette::kRounding));
    drawList->AddRect(min, max, kNoticeOutline, uiThemePx(palette::kRounding), 0, 1.0f);
    uiThemeText(drawList, uiThemeFont(12.0f), min + uiThemePx({12.0f, 8.0f}), kNoticeText, text);
}

} // namespace

void LauncherApp::drawProjectsScreen() {
    const ImVec2 window = ImGui::GetWindowPos();
    const float top = window.y + uiThemePx(kContentTop);
    ProjectsLayout at;
    at.contentMin = {window.x + uiThemePx(kSidebarWidth), window.y};
    at.contentMax = window + ImGui::GetWindowSize();
    at.newButtonSize = uiThemePx({kNewButtonWidth, kControlHeight});
    at.newButton = {at.contentMax.x - uiThemePx(kContentInset) - at.newButtonSize.x, top};
    at.addButtonSize = uiThemePx({kAddButtonWidth, kControlHeight});
    at.addButton = {at.newButton.x - uiThemePx(kControlGap) - at.addButtonSize.x, top};
    at.searchMin = {at.addButton.x - uiThemePx(kControlGap) - uiThemePx(kSearchWidth), top};
    at.searchMax = at.searchMin + uiThemePx({kSearchWidth, kControlHeight});
    at.noticeTop = top + uiThemePx(kControlHeight) + uiThemePx(kBelowTitleLine);

    drawContentArea(kProjectsTitle);
    const SearchKey searchKey = drawSearchBox(at);
    if (drawSecondaryButton("Add project from disk", at.addButton, at.addButtonSize, 13.0f)) addProjectFromDisk();
    if (drawPrimaryButton(kNewProjectLabel, at.newButton, at.newButtonSize, 13.5f)) beginNewProject();

    float headerTop = at.noticeTop;
    if (!noticeText.empty()) {
        const float inset = uiThemePx(kContentInset);
        drawNotice({at.contentMin.x + inset, headerTop},
                   {at.contentMax.x - inset, headerTop + uiThemePx(kNoticeHeight)}, noticeText);
        headerTop += uiThemePx(kNoticePitch);
    }
    drawTableHeader(at, headerTop, uiThemePx(kHeaderHeight));

    ProjectRows rows;
    rows.editorLabel = looks.ask([this] { return defaultEditorLabel(*this); });
    // Compute the rows after drawSearchBox, which may change the search text, so that they match the new text.
    rows.indices = displayedProjects(*this, rows.editorLabel);
    displayedBefore = rows.indices;
    rows.openFirst = searchKey == SearchKey::Enter && !searchTerms(searchText).empty();
    if (searchKey == SearchKey::Down && !rows.indices.empty()) {
        projectToFocus = settings->projects()[static_cast<std::size_t>(rows.indices.front())].path;
    }
    rows.focusIndex = takeProjectToFocus();
    const float listTop = headerTop + uiThemePx(kHeaderHeight) + uiThemePx(kListGap);
    const float listHeight = at.contentMax.y - listTop - uiThemePx(kListBottomGap);
    if (rows.indices.empty()) {
        drawEmptyProjects(at, listTop, listHeight);
    } else {
        drawProjectTable(at, rows, listTop, listHeight);
    }
}

// Returns the index of the project whose row gets the keyboard focus in this frame, or -1. While a popup is open, the
// request waits, because the popup has the focus.
std::int32_t LauncherApp::takeProjectToFocus() {
    if (projectToFocus.empty() || ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopup)) return -1;
    const std::string path = std::exchange(projectToFocus, {});
    const std::vector<ProjectEntry>& projects = settings->projects();
    const auto entry = std::find_if(projects.begin(), projects.end(),
                                    [&](const ProjectEntry& candidate) { return candidate.path == path; });
    return entry != projects.end() ? static_cast<std::int32_t>(entry - projects.begin()) : -1;
}

LauncherApp::SearchKey LauncherApp::drawSearchBox(const ProjectsLayout& at) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 min = at.searchMin, max = at.searchMax, mouse = ImGui::GetIO().MousePos;
    const float middle = (min.y + max.y) * 0.5f;
    const bool wanted = startSearchByTyping() || ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_F);
    const bool clickable = ImGui::IsWindowHovered(); // false behind a popup
    const bool clicked = clickable && ImGui::IsMouseClicked(ImGuiMouseButton_Left);
    drawList->AddRectFilled(min, max, kSearchFill, uiThemePx(palette::kRounding));

    const ImGuiID id = ImGui::GetID(kSearchField);
    // While the field is active, InputText edits its own copy of the text and writes it back. So clear that copy too.
    const auto clearSearch = [&] {
        searchText[0] = '\0';
        if (ImGuiInputTextState* editing = ImGui::GetInputTextState(id)) editing->ReloadUserBufAndMoveToEnd();
    };

    const bool hadText = searchText[0] != '\0';
    const bool clearHovered =
        hadText && clickable && ImRect(max.x - uiThemePx(26.0f), min.y, max.x - uiThemePx(4.0f), max.y).Contains(mouse);
    const bool boxHovered = clearHovered || (clickable && ImRect(min, max).Contains(mouse));
    if (clearHovered && clicked) {
        clearSearch();
    } else if (wanted || (boxHovered && clicked)) {
        activateTextField(id);
    }

    drawSearchIcon(drawList, {min.x, middle});

    ImFont* font = uiThemeFont(13.0f);
    // Remember here whether the field is active: on Escape, InputText restores its text and becomes inactive.
    const bool hadKeyboard = ImGui::GetActiveID() == id;
    ImGui::PushFont(font, uiThemeFontSize(font));
    ImGui::SetCursorScreenPos({min.x + uiThemePx(kSearchTextLeft), min.y});
    ImGui::SetNextItemWidth(uiThemePx(hadText ? kSearchWidth - 52.0f : kSearchWidth - 38.0f));
    ImGui::PushStyleVar(ImGuiStyleVar_FramePadding,
                        ImVec2(0.0f, (uiThemePx(kControlHeight) - uiThemeFontSize(font)) * 0.5f));
    constexpr std::array<ImGuiCol, 4> hiddenFrame = {ImGuiCol_FrameBg, ImGuiCol_FrameBgHovered, ImGuiCol_FrameBgActive,
                                                     ImGuiCol_Border};
    for (const ImGuiCol colour : hiddenFrame)
        ImGui::PushStyleColor(colour, 0u);
    drawTextField(kSearchField, "Search", searchText, sizeof searchText);
    const bool active = ImGui::IsItemActive();
    if (active && std::exchange(searchStartedByTyping, false)) {
        ImGui::GetInputTextState(id)->ClearSelection(); // so that the next character does not replace the first ones
    }
    ImGui::PopStyleColor(static_cast<int>(hiddenFrame.size()));
    ImGui::PopStyleVar();
    ImGui::PopFont();
    if ((active || hadKeyboard) && ImGui::IsKeyPressed(ImGuiKey_Escape)) clearSearch();

    if (hadText) drawClearGlyph(drawList, {max.x, middle}, clearHovered);
    if (uiThemeFocusShows(id)) uiThemeFocusRing(drawList, min, max, uiThemePx(palette::kRounding));
    drawList->AddRect(min, max,
                      active       ? kSearchBorderActive
                      : boxHovered ? kSearchBorderHovered
                                   : kSearchBorder,
                      uiThemePx(palette::kRounding), 0, 1.0f);
    if (!hadKeyboard) return SearchKey::None;
    if (ImGui::IsKeyPressed(ImGuiKey_Enter, false) || ImGui::IsKeyPressed(ImGuiKey_KeypadEnter, false)) {
        return SearchKey::Enter;
    }
    return ImGui::IsKeyPressed(ImGuiKey_DownArrow, false) ? SearchKey::Down : SearchKey::None;
}
