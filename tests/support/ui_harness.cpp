#include "support/ui_harness.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "ui/ui_keyboard.h"

namespace fs = std::filesystem;

namespace {

struct SubmittedItem {
    ImRect rect;
    std::string label; // only Dear ImGui's own widgets have one
    bool disabled = false;
};

std::map<ImGuiID, SubmittedItem> theItems; // of the last frame

// Returns the identifier of an item; 0 if the item was not submitted in the last frame.
ImGuiID identify(const char* window, IdPath path) {
    for (const ImGuiWindow* candidate : ImGui::GetCurrentContext()->Windows) {
        const std::string_view name = candidate->Name; // a child window's name ends in "_" and the child's identifier
        if (name != window && !name.starts_with(std::string(window) + "_")) continue;
        ImGuiID id = candidate->ID;
        for (const auto& step : path) {
            const int* number = std::get_if<int>(&step);
            id = number ? ImHashData(number, sizeof *number, id) : ImHashStr(std::get<const char*>(step), 0, id);
        }
        if (theItems.contains(id)) return id;
    }
    return 0;
}

} // namespace

// --- called by the test build of Dear ImGui --------------------------------------------------------------------------

void ImGuiTestEngineHook_ItemAdd(ImGuiContext*, ImGuiID id, const ImRect& rect, const ImGuiLastItemData* item) {
    SubmittedItem& submitted = theItems[id];
    submitted.rect = rect;
    submitted.disabled = item != nullptr && (item->ItemFlags & ImGuiItemFlags_Disabled) != 0;
}
void ImGuiTestEngineHook_ItemInfo(ImGuiContext*, ImGuiID id, const char* label, ImGuiItemStatusFlags) {
    theItems[id].label = label;
}
void ImGuiTestEngineHook_Log(ImGuiContext*, const char*, ...) {}
const char* ImGuiTestEngine_FindItemDebugLabel(ImGuiContext*, ImGuiID) {
    return nullptr;
}

// --- starting --------------------------------------------------------------------------------------------------------

UiHarness::UiHarness() {
    RecordingSystem& system = recordingSystem();
    system = {};
    system.launcherDirectory = launcher.string();
    system.userDataDirectory = (folder / "data").string();
    system.userDocumentsDirectory = (folder / "documents").string();
    for (const fs::path& directory : {launcher, folder / "data", folder / "documents"})
        fs::create_directories(directory);
    setRecordedTime(1000000);

    ImGui::GetCurrentContext()->TestEngineHookItems = true;
    ImGui::GetIO().ConfigInputTrickleEventQueue = false;
    ImGui::GetIO().ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard; // as UiHost does
    resize(1180.0f, 740.0f);
    uiThemeInitialize(&integration);
}

UiHarness::~UiHarness() {
    app.reset();
    uiThemeShutdown();
}

void UiHarness::configure(const std::string& manifestUrl) const {
    folder.write("launcher/here/launcher_config.json",
                 R"({"google_client_id": "client", "google_client_secret": "secret", "editor_update_manifest_url": ")" +
                     manifestUrl + "\"}");
}

LauncherApp& UiHarness::startSignedIn(const std::string& manifestUrl) {
    configure(manifestUrl);
    start().signIn->state = SignInState::SignedIn;
    return *app;
}

ProjectEntry UiHarness::makeProject(const std::string& name, std::int64_t lastOpened) const {
    const fs::path file = folder.write("projects/" + name + "/" + name + ".zantorproj", "");
    return {name, file.string(), "", "", lastOpened};
}

std::vector<ProjectEntry> UiHarness::storedProjects() const {
    LauncherSettings settings;
    return settings.load() ? settings.projects() : std::vector<ProjectEntry>();
}

// --- frames ----------------------------------------------------------------------------------------------------------

void UiHarness::frame() {
    theItems.clear();
    ImGui::GetIO().DeltaTime = 1.0f / 60.0f;
    uiThemeNewFrame();
    uiThemeTick(1.0f / 60.0f);
    uiThemeApplyStyle();
    app->drawFrame(1.0f / 60.0f);
    ImGui::Render();
    present();
}

// --- items -----------------------------------------------------------------------------------------------------------

std::optional<ImRect> UiHarness::rect(const char* window, IdPath path) const {
    const ImGuiID id = identify(window, path);
    return id != 0 ? std::optional(theItems.at(id).rect) : std::nullopt;
}

std::optional<ImRect> UiHarness::menuEntry(const std::string& label, bool* disabled) const {
    const auto found = std::ranges::find(theItems, label, [](const auto& item) { return item.second.label; });
    if (found == theItems.end()) return std::nullopt;
    if (disabled != nullptr) *disabled = found->second.disabled;
    return found->second.rect;
}

bool UiHarness::focused(const char* window, IdPath path) const {
    const ImGuiContext& context = *ImGui::GetCurrentContext();
    return context.NavCursorVisible && context.NavId != 0 && context.NavId == identify(window, path);
}

// --- input -----------------------------------------------------------------------------------------------------------

void UiHarness::clickAt(ImVec2 point, ImGuiMouseButton button) {
    moveTo(point);
    press(button);
    release(button);
}

void UiHarness::key(ImGuiKey pressed, ImGuiKey modifier) {
    for (const bool down : {true, false}) {
        if (modifier != ImGuiKey_None) ImGui::GetIO().AddKeyEvent(modifier, down);
        ImGui::GetIO().AddKeyEvent(pressed, down);
        frame();
    }
}
