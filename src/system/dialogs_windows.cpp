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

// Calls the hook, which discards the clicks on the launcher's window that arrived while the dialog was open: the
// dialog's message loop delivers them too.
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

    // OPENFILENAMEW expects pairs of texts. Each text ends with a zero, and one more zero ends the list.
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
