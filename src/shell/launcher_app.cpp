#include "shell/launcher_app.h"

#include <imgui_internal.h>

#include "ui/ui_keyboard.h"
#include "ui/ui_theme.h"

LauncherApp::LauncherApp()
    : config(std::make_unique<LauncherConfig>(loadLauncherConfig()))
    , settings(std::make_unique<LauncherSettings>()) {
    (void)settings->load(); // fails on the first run, when there is no file yet
    if (!config->configured) return;

    signIn = std::make_unique<SignInFlow>(config->googleClientId, config->googleClientSecret, settings.get());
    install = std::make_unique<EditorInstallState>(
        config->editorUpdateManifestUrl, config->downloadsDirectory,
        ArtifactAuthenticity{config->artifactAuthenticityUrl, config->artifactAuthenticityKeys});
    restoreStoredSession();
}

// The members are destroyed in reverse order of their declaration: `install`, which stops and joins its worker, then
// `signIn`, then `settings`, which `signIn` uses.
LauncherApp::~LauncherApp() {
    if (backgroundTexture == nullptr) return;
    // The Dear ImGui context still exists only in tests. In the launcher the host has already destroyed it.
    if (ImGui::GetCurrentContext() != nullptr) ImGui::UnregisterUserTexture(backgroundTexture);
    backgroundTexture->DestroyPixels();
    IM_DELETE(backgroundTexture);
}

void LauncherApp::restoreStoredSession() {
    if (settings->refreshToken().empty()) return;
    sessionRestoreStarted = true;
    signIn->restoreSession();
}

void LauncherApp::drawFrame(float /*deltaSeconds*/) {
    looks.forget();
    collectResults();
    if (signIn && !sessionRestoreStarted && signIn->state == SignInState::SignedOut) restoreStoredSession();

    const ImGuiViewport* viewport = ImGui::GetMainViewport();
    ImGui::SetNextWindowPos(viewport->WorkPos);
    ImGui::SetNextWindowSize(viewport->WorkSize);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(0.0f, 0.0f));
    ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 0.0f);
    ImGuiWindowFlags flags = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove |
                             ImGuiWindowFlags_NoScrollWithMouse | ImGuiWindowFlags_NoBackground |
                             ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus;
#ifdef IMGUI_HAS_DOCK
    flags |= ImGuiWindowFlags_NoDocking;
#endif
    ImGui::Begin("##ZantorLauncher", nullptr, flags);
    ImGui::PopStyleVar(2);

    const bool signedInShell = config->configured && (signIn->state == SignInState::RestoringSession ||
                                                      signIn->state == SignInState::SignedIn);
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 min = ImGui::GetWindowPos();
    const ImVec2 max = min + ImGui::GetWindowSize();
    // In the signed-in shell the content area covers and rounds the bottom right corner.
    drawList->AddRectFilled(min, max, uiThemeBackground(), uiThemeWindowRounding(),
                            signedInShell ? ImDrawFlags_RoundCornersBottomLeft : ImDrawFlags_RoundCornersBottom);

    if (!config->configured) {
        drawNotConfiguredScreen();
    } else if (signedInShell) {
        drawSignedInShell();
    } else {
        drawSignInScreen();
    }
    uiThemeRecoverKeyboard();
    drawProjectDialogs();
    uiThemeReveal(drawList, min, max);
    ImGui::End();
}

bool LauncherApp::isAtRest() const {
    // While a worker runs or a project waits to be opened, each frame calls collectResults, so frames must continue.
    const bool signInRuns =
        signIn && (signIn->state == SignInState::SigningIn || signIn->state == SignInState::RestoringSession);
    const bool installRuns = install && install->isRunning();
    if (signInRuns || installRuns || decodingBackground.valid() || !pendingOpenProjectPath.empty()) return false;
    return !looks.answersChanged();
}

// Processes the results of the workers.
void LauncherApp::collectResults() {
    if (signIn) {
        const bool signingIn = signIn->state == SignInState::SigningIn;
        signIn->pollSignIn();
        if (signingIn && signIn->state != SignInState::SigningIn) attentionWanted = true;
    }
    if (install) {
        install->joinIfFinished();
        const bool projectWaits = !pendingOpenProjectPath.empty();
        servicePendingOpen();
        if (projectWaits && pendingOpenProjectPath.empty()) attentionWanted = true;
    }
}

float LauncherApp::downloadProgress() const {
    if (!install || install->status() != EditorInstallStatus::Downloading || install->totalBytes() <= 0) return -1.0f;
    return static_cast<float>(install->downloadedBytes()) / static_cast<float>(install->totalBytes());
}

void LauncherApp::drawSignedInShell() {
    if (!updateCheckStarted) {
        updateCheckStarted = true;
        if (install) install->startUpdate();
    }
    handleShellKeys();
    drawSidebar(); // draw it first, so that a click on it changes the screen in this frame
    switch (activeTab) {
    case LauncherTab::Projects:
        drawProjectsScreen();
        break;
    case LauncherTab::Installs:
        drawInstallsScreen();
        break;
    default:
        drawDownloadsScreen();
        break;
    }
}
