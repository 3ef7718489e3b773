// Draws the table of the Projects screen: the header, the rows with star and menu, and a text if there are no rows.

#include <algorithm>
#include <cmath>
#include <string>

#include <imgui_internal.h>

#include "projects/project_list.h"
#include "projects/project_on_disk.h"
#include "projects/project_search.h"
#include "projects/projects_screen.h"
#include "shell/widgets.h"
#include "system/operating_system.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_list.h"
#include "ui/ui_palette.h"
#include "ui/ui_popups.h"
#include "ui/ui_theme.h"

namespace {

constexpr char kContextMenu[] = "##project_context_menu";

constexpr ImU32 kHeaderStar = palette::kGrey51;
constexpr ImU32 kHeaderStarHovered = palette::kGrey86;
constexpr ImU32 kHeaderRule = 0xFF282828;
constexpr ImU32 kSortedLabel = palette::kForeground;
constexpr ImU32 kHoveredLabel = 0xFFD2D2D2;
constexpr ImU32 kLabel = palette::kGrey63;

constexpr ImU32 kRowHovered = 0xFF262424;
constexpr ImU32 kRowRule = 0xFF222222;
constexpr ImU32 kStarOff = 0xFF646464;
constexpr ImU32 kStarOffHovered = palette::kGrey78;
constexpr ImU32 kName = palette::kGrey94;
constexpr ImU32 kMissingName = 0xFF4444EF;
constexpr ImU32 kPath = palette::kGrey55;
constexpr ImU32 kMissingPath = 0xFF7878EF;
constexpr ImU32 kCell = palette::kGrey71;
constexpr ImU32 kDots = palette::kGrey55;
constexpr ImU32 kDotsHovered = IM_COL32_WHITE;

constexpr ImU32 kEmptyIcon = palette::kGrey55;
constexpr ImU32 kEmptyTitle = 0xFFE6E6E6;
constexpr ImU32 kEmptyBody = palette::kGrey59;
constexpr ImU32 kImportIcon = palette::kGrey78;

constexpr float kRowHeight = 52.0f;
constexpr float kDotsFromRight = 28.0f;
constexpr float kDotsHit = 14.0f;
constexpr float kDotPitch = 6.0f;
constexpr float kDotRadius = 1.5f;
constexpr float kNameTop = 8.0f;
constexpr float kPathTop = 28.0f;
constexpr float kNameClipGap = 16.0f;
constexpr float kRowRuleInset = 8.0f;
constexpr float kHeaderRuleInset = 20.0f;

ImRect squareAround(ImVec2 centre, float reach) {
    return {centre.x - reach, centre.y - reach, centre.x + reach, centre.y + reach};
}

HitArea hitArea(const char* identifier, const ImRect& rectangle) {
    return hitArea(ImGui::GetID(identifier), rectangle.Min, rectangle.Max);
}

// Handles the mouse on a row outside its star and its dots (the menu button). `takesMouse` is false while the pointer
// is on the star or the dots, so that a click on them does not open the project.
HitArea rowArea(ImGuiID id, const ImRect& rectangle, bool takesMouse) {
    HitArea row;
    row.focused = uiThemeFocusShows(id);
    if (takesMouse || row.focused) {
        row.clicked = ImGui::ButtonBehavior(rectangle, id, &row.hovered, &row.held);
    } else if (ImGui::GetActiveID() == id && !ImGui::IsMouseDown(ImGuiMouseButton_Left)) {
        ImGui::ClearActiveID(); // the mouse button was released on the star or the dots
    }
    if (!takesMouse) {
        row.hovered = ImGui::IsWindowHovered(ImGuiHoveredFlags_AllowWhenBlockedByActiveItem) &&
                      rectangle.Contains(ImGui::GetIO().MousePos);
    }
    ImGui::KeepAliveID(id);
    return row;
}

void ringAround(ImDrawList* drawList, ImVec2 centre, float reach) {
    const ImVec2 corner = uiThemePx({reach, reach});
    uiThemeFocusRing(drawList, centre - corner, centre + corner, corner.x, -2.0f);
}

void drawDots(ImDrawList* drawList, ImVec2 centre, ImU32 colour) {
    for (const float offset : {-kDotPitch, 0.0f, kDotPitch})
        drawList->AddCircleFilled({centre.x + uiThemePx(offset), centre.y}, kDotRadius, colour);
}

void drawCentred(ImDrawList* drawList, float fontSize, float centreX, float top, ImU32 colour, const char* text) {
    ImFont* font = uiThemeFont(fontSize);
    uiThemeText(drawList, font, {std::floor(centreX - uiThemeTextSize(font, text).x * 0.5f), top}, colour, text);
}

// Draws the outlines of a cube that is seen from a corner.
void drawCube(ImDrawList* drawList, ImVec2 centre) {
    const float reach = uiThemePx(30.0f);
    constexpr float across = 0.8660254f;
    const auto corner = [&](float x, float y) { return centre + ImVec2(x * reach, y * reach); };
    const ImVec2 sides[6] = {corner(0.0f, -1.0f), corner(across, -0.5f), corner(across, 0.5f),
                             corner(0.0f, 1.0f),  corner(-across, 0.5f), corner(-across, -0.5f)};
    drawList->AddPolyline(sides, 6, kEmptyIcon, ImDrawFlags_Closed, 1.5f);
    for (const ImVec2 end : {sides[0], sides[4], sides[2]})
        drawList->AddLine(centre, end, kEmptyIcon, 1.5f);
}

} // namespace

void LauncherApp::drawTableHeader(const ProjectsLayout& at, float top, float height) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const float left = at.contentMin.x + uiThemePx(kTableInset);
    const float innerWidth = at.contentMax.x - at.contentMin.x - uiThemePx(2.0f * kTableInset);
    const float middle = top + height * 0.5f;

    const ImVec2 star(left + uiThemePx(kStarColumn), middle);
    const HitArea area = hitArea("##header_star_sort", squareAround(star, uiThemePx(kStarHit)));
    if (area.clicked) sortStarredFirst = !sortStarredFirst;
    if (area.added) {
        drawStarIcon(drawList, star, uiThemePx(kStarRadius),
                     sortStarredFirst ? kAmber
                     : area.hovered   ? kHeaderStarHovered
                                      : kHeaderStar,
                     sortStarredFirst);
    }
    if (area.focused) ringAround(drawList, star, kStarHit);

    ImFont* font = uiThemeFont(12.5f);
    const TableHeader header = {font, top, height, middle - uiThemeFontSize(font) * 0.5f};
    drawSortHeader(header, "Name", left + uiThemePx(kNameColumn), ProjectSortColumn::Name);
    drawSortHeader(header, "Platform", left + kPlatformColumn * innerWidth, ProjectSortColumn::Platform);
    drawSortHeader(header, "Editor version", left + kEditorColumn * innerWidth, ProjectSortColumn::EditorVersion);
    const float inset = uiThemePx(kHeaderRuleInset);
    drawList->AddLine({at.contentMin.x + inset, top + height}, {at.contentMax.x - inset, top + height}, kHeaderRule,
                      1.0f);
}

void LauncherApp::drawSortHeader(const TableHeader& header, const char* label, float x, ProjectSortColumn column) {
    const float textWidth = uiThemeTextSize(header.font, label).x;
    const ImVec2 min(x, header.top), max(x + textWidth + uiThemePx(14.0f), header.top + header.height);
    const HitArea area = hitArea(ImGui::GetID(label), min, max);
    if (area.clicked) {
        sortAscending = sortColumn == column ? !sortAscending : true;
        sortColumn = column;
    }
    if (area.hovered && ImGui::IsMouseHoveringRect(min, max)) ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const bool sorted = sortColumn == column;
    const ImU32 colour = sorted ? kSortedLabel : area.hovered ? kHoveredLabel : kLabel;
    uiThemeText(drawList, header.font, {x, header.textTop}, colour, label);
    if (area.focused)
        uiThemeFocusRing(drawList, min - uiThemePx({6.0f, 0.0f}), max, uiThemePx(palette::kRounding), -3.0f);
    if (!sorted) return;
    const float left = x + textWidth + uiThemePx(4.0f), reach = uiThemePx(3.0f);
    const float middle = header.top + header.height * 0.5f;
    const float direction = sortAscending ? 1.0f : -1.0f;
    const float apex = middle - direction * 0.8f * reach, base = middle + direction * 0.6f * reach;
    drawList->AddTriangleFilled({left, base}, {left + reach, apex}, {left + 2.0f * reach, base}, colour);
}

void LauncherApp::drawProjectTable(const ProjectsLayout& at, const ProjectRows& rows, float top, float height) {
    RowRequest request;
    uiThemeBeginList("##ProjectsTableList", {at.contentMin.x + uiThemePx(kTableInset), top},
                     {at.contentMax.x - at.contentMin.x - uiThemePx(2.0f * kTableInset), height});
    ImGuiListClipper clipper;
    clipper.Begin(static_cast<int>(rows.indices.size()), uiThemePx(kRowHeight));
    const auto toFocus = std::find(rows.indices.begin(), rows.indices.end(), rows.focusIndex);
    if (toFocus != rows.indices.end()) clipper.IncludeItemByIndex(static_cast<int>(toFocus - rows.indices.begin()));
    while (clipper.Step()) {
        for (int position = clipper.DisplayStart; position < clipper.DisplayEnd; ++position) {
            drawProjectRow(rows, static_cast<std::size_t>(position), request);
        }
    }
    uiThemeEndList();

    handleRowKeys(rows, request);
    if (request.openIndex >= 0) openProjectRow(request.openIndex);
    if (request.removeIndex >= 0) removeProject(request.removeIndex);
}

void LauncherApp::drawProjectRow(const ProjectRows& rows, std::size_t position, RowRequest& request) {
    const std::int32_t index = rows.indices[position];
    // `index` and `entry` stay valid: the list changes only after the last row is drawn. The star changes an entry in
    // place.
    const ProjectEntry& entry = settings->projects()[static_cast<std::size_t>(index)];
    const ImVec2 min = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    const ImVec2 size(width, uiThemePx(kRowHeight));
    const ImVec2 max = min + size;

    ImGui::PushID(index); // the list index: sorting does not change a row's identifiers
    const ImGuiID rowId = ImGui::GetID("##project_row");
    ImGui::ItemSize(size);
    const bool visible = ImGui::ItemAdd(ImRect(min, max), rowId);
    if (index == rows.focusIndex) {
        ImGui::FocusItem(); // also scrolls to the row
        ImGui::SetNavCursorVisible(true);
    }
    if (!visible) {
        ImGui::PopID();
        return;
    }

    const float middle = min.y + size.y * 0.5f;
    const ImVec2 mouse = ImGui::GetIO().MousePos;
    const ImVec2 starCentre(min.x + uiThemePx(kStarColumn), middle);
    const ImVec2 dotsCentre(max.x - uiThemePx(kDotsFromRight), middle);
    const ImRect starRect = squareAround(starCentre, uiThemePx(kStarHit));
    const ImRect dotsRect = squareAround(dotsCentre, uiThemePx(kDotsHit));
    const bool onControls = starRect.Contains(mouse) || dotsRect.Contains(mouse);
    ImGui::PushItemFlag(ImGuiItemFlags_NoTabStop, true); // Tab moves between rows, the arrow keys inside a row
    const HitArea star = hitArea("##star_toggle", starRect);
    const HitArea dots = hitArea("##dots_menu", dotsRect);
    ImGui::PopItemFlag();
    const HitArea row = rowArea(rowId, ImRect(min, max), !onControls && !star.held && !dots.held);

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    if (row.hovered || star.hovered || dots.hovered || row.held) {
        drawList->AddRectFilled(min, max, kRowHovered, uiThemePx(palette::kRounding));
    }
    const float inset = uiThemePx(kRowRuleInset);
    drawList->AddLine({min.x + inset, max.y}, {max.x - inset, max.y}, kRowRule, 1.0f);

    if (star.clicked) {
        settings->toggleFavorite(entry.path);
        (void)settings->save();
    }
    drawStarIcon(drawList, starCentre, uiThemePx(kStarRadius),
                 entry.favorite ? kAmber
                 : star.hovered ? kStarOffHovered
                                : kStarOff,
                 entry.favorite);
    const bool exists = looks.ask([path = entry.path] { return isProjectMissing(path) ? "missing" : ""; }).empty();
    drawRowTexts(rows, entry, exists, min, max);
    drawDots(drawList, dotsCentre, dots.hovered ? kDotsHovered : kDots);

    const bool focused = row.focused || star.focused || dots.focused;
    if (focused) request.focusedIndex = index;
    if ((focused && uiThemeMenuKeyPressed()) || dots.clicked ||
        (row.hovered && ImGui::IsMouseClicked(ImGuiMouseButton_Right))) {
        ImGui::OpenPopup(kContextMenu);
    }
    if (row.focused || ImGui::IsPopupOpen(kContextMenu)) {
        uiThemeFocusRing(drawList, min, max, uiThemePx(palette::kRounding), -2.0f);
    }
    if (star.focused) ringAround(drawList, starCentre, kStarHit);
    if (dots.focused) ringAround(drawList, dotsCentre, kDotsHit);
    if (row.clicked && exists) request.openIndex = index;
    drawProjectMenu(index, exists, request);
    ImGui::PopID();
}

void LauncherApp::drawRowTexts(const ProjectRows& rows, const ProjectEntry& entry, bool exists, ImVec2 min,
                               ImVec2 max) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const float width = max.x - min.x;
    const float platformX = min.x + kPlatformColumn * width, textX = min.x + uiThemePx(kNameColumn);
    const std::string path = exists ? entry.path : entry.path + " - missing";
    // Long names and paths are clipped before the next column. A tooltip shows them in full.
    const ImRect texts(textX, min.y, platformX - uiThemePx(kNameClipGap), max.y);
    ImFont* nameFont = uiThemeFont(14.0f);
    ImFont* pathFont = uiThemeFont(11.5f);
    drawList->PushClipRect(texts.Min, texts.Max, true);
    uiThemeText(drawList, nameFont, {textX, min.y + uiThemePx(kNameTop)}, exists ? kName : kMissingName, entry.name);
    uiThemeText(drawList, pathFont, {textX, min.y + uiThemePx(kPathTop)}, exists ? kPath : kMissingPath, path);
    drawList->PopClipRect();
    const float widest = std::max(uiThemeTextSize(nameFont, entry.name).x, uiThemeTextSize(pathFont, path).x);
    if (widest > texts.GetWidth()) uiThemeTooltip(ImGui::GetID("##project_row"), texts, entry.name + "\n" + path);

    ImFont* font = uiThemeFont(12.5f);
    const float top = (min.y + max.y - uiThemeFontSize(font)) * 0.5f;
    uiThemeText(drawList, font, {platformX, top}, kCell, projectPlatformLabel(entry));
    uiThemeText(drawList, font, {min.x + kEditorColumn * width, top}, kCell,
                entry.editorVersion.empty() ? rows.editorLabel : entry.editorVersion);
}

void LauncherApp::drawProjectMenu(std::int32_t index, bool exists, RowRequest& request) {
    if (!uiThemeBeginMenu(kContextMenu)) return;
    const ProjectEntry& entry = settings->projects()[static_cast<std::size_t>(index)];
    if (uiThemeMenuItem("Open Project", exists)) request.openIndex = index;
    if (uiThemeMenuItem(entry.favorite ? "Remove from Favorites" : "Add to Favorites")) {
        settings->toggleFavorite(entry.path);
        (void)settings->save();
    }
    if (uiThemeMenuItem("Show in File Manager", exists)) {
        openInFileManager(projectDirectory(entry.path));
    }
    ImGui::Separator();
    if (uiThemeMenuItem("Remove From List")) request.removeIndex = index;
    uiThemeEndPopup();
}

void LauncherApp::drawEmptyProjects(const ProjectsLayout& at, float top, float height) {
    ImGui::PushID("empty_projects");
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const float centreX = std::round((at.contentMin.x + at.contentMax.x) * 0.5f);
    const float anchor = std::round(top + 0.38f * height);
    const float titleTop = anchor + uiThemePx(20.0f), bodyTop = anchor + uiThemePx(44.0f);
    const float buttonsTop = anchor + uiThemePx(76.0f);
    drawCube(drawList, {centreX, anchor - uiThemePx(28.0f)});

    if (settings->projects().empty() || searchTerms(searchText).empty()) {
        drawCentred(drawList, 17.0f, centreX, titleTop, kEmptyTitle, "No projects");
        drawCentred(drawList, 13.0f, centreX, bodyTop, kEmptyBody,
                    "Create a new project or select your projects folder to get started.");
        const ImVec2 importSize = uiThemePx({148.0f, 34.0f}), newSize = uiThemePx({130.0f, 34.0f});
        const float gap = uiThemePx(12.0f);
        const ImVec2 importAt(centreX - (importSize.x + gap + newSize.x) * 0.5f, buttonsTop);
        if (drawSecondaryButton("Import projects", importAt, importSize, 13.0f)) addProjectFromDisk();
        drawFolderIcon(drawList, importAt + uiThemePx({14.0f, 10.0f}), uiThemePx(14.0f), kImportIcon);
        if (drawPrimaryButton(kNewProjectLabel, {importAt.x + importSize.x + gap, buttonsTop}, newSize, 13.5f)) {
            beginNewProject();
        }
    } else {
        drawCentred(drawList, 17.0f, centreX, titleTop, kEmptyTitle, "No matching projects");
        drawCentred(drawList, 13.0f, centreX, bodyTop, kEmptyBody,
                    "No project matches your search criteria. Try a different search.");
        const ImVec2 size = uiThemePx({120.0f, 34.0f});
        if (drawSecondaryButton("Clear search", {centreX - size.x * 0.5f, buttonsTop}, size, 13.0f)) {
            searchText[0] = '\0';
        }
    }
    ImGui::PopID();
}
