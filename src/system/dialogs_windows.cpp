#include <cstddef>
#include <cwchar>
#include <iterator>
#include <string>

#include <windows.h>
#include <commdlg.h>
#include <objbase.h>
#include <shlobj.h>

#include "system/dialog_hook.h"
#include "system/operating_system.h"
#include "system/system_texts.h"
#include "system/wide_text_windows.h"

namespace {

// Calls the dialog hook after a dialog has closed. The dialog's message loop delivers clicks on the launcher's window
// to the launcher. The hook discards these clicks.
void callHook() {
    if (currentDialogHook) currentDialogHook(0);
}

} // namespace

std::string browseForFolder(const std::string& title, const std::string& /*startPath*/) {
    const bool oleStarted = SUCCEEDED(OleInitialize(nullptr)); // BIF_NEWDIALOGSTYLE needs it
    const std::wstring wideTitle = widenBytes(title);
    BROWSEINFOW request{};
    request.lpszTitle = wideTitle.c_str();
    request.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    std::string folder;
    if (LPITEMIDLIST chosen = SHBrowseForFolderW(&request)) {
        wchar_t path[MAX_PATH] = L"";
        if (SHGetPathFromIDListW(chosen, path)) folder = narrowUnits(path);
        CoTaskMemFree(chosen);
    }
    if (oleStarted) OleUninitialize();
    callHook();
    return folder;
}

std::string pickProjectFile(const std::string& /*title*/, const std::string& initialPath) {
    wchar_t path[4096] = L"";
    std::wcsncpy(path, widenBytes(initialPath).c_str(), std::size(path) - 1);

    // OPENFILENAMEW expects a list of labels and patterns. A zero ends each text. A second zero ends the list; the
    // wstring has it after its last character.
    std::wstring filter = widenBytes(kProjectFilterText);
    filter += L'\0' + widenBytes(kProjectFilterPattern) + L'\0';

    OPENFILENAMEW request{};
    request.lStructSize = sizeof request;
    request.lpstrFilter = filter.c_str();
    request.lpstrFile = path;
    request.nMaxFile = static_cast<DWORD>(std::size(path));
    request.Flags = OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST;
    const bool picked = GetOpenFileNameW(&request) != FALSE;
    callHook();
    return picked ? narrowUnits(path) : std::string();
}
