#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/dialog_hook.h"
#include "system/dialog_problem.h"
#include "system/operating_system.h"
#include "system/portal_linux.h"
#include "system/spawn_linux.h"
#include "system/system_texts.h"

namespace {

constexpr int kHookPeriodMs = 30;

// Reads the output of the dialog program until the program closes it. Calls the dialog hook during the wait.
std::string readToEnd(int descriptor, pid_t dialog) {
    std::string text;
    char buffer[4096];
    for (;;) {
        pollfd output{descriptor, POLLIN, 0};
        if (currentDialogHook && ::poll(&output, 1, kHookPeriodMs) <= 0) {
            currentDialogHook(dialog);
            continue;
        }
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

// Runs a dialog program and waits for it. After a choice the program prints the path with a line feed and exits with 0.
// After a cancel it exits with 1. Returns Unavailable if the program is not installed or fails.
DialogOutcome runDialog(const std::vector<std::string>& arguments, std::string& choice) {
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0) return DialogOutcome::Unavailable;
    const SpawnResult dialog = spawnProgram(arguments, output[1]);
    ::close(output[1]);
    if (dialog.error == 0) choice = readToEnd(output[0], dialog.process);
    ::close(output[0]);
    if (dialog.error != 0) return DialogOutcome::Unavailable;

    int status = 0;
    while (::waitpid(dialog.process, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) return DialogOutcome::Unavailable;
    if (WEXITSTATUS(status) == 1) choice.clear();
    if (choice.ends_with('\n')) choice.pop_back(); // remove only one line feed: the path itself may end in one
    return DialogOutcome::Answered;
}

// Shows the dialog of the desktop portal, of GNOME's zenity or of KDE's kdialog: the first one that works. Returns the
// chosen path, or an empty text after a cancel. If none works, sets currentDialogProblem and returns an empty text.
std::string askUser(bool chooseFolder, const std::string& title, const std::string& start,
                    const std::vector<std::string>& zenity, const std::vector<std::string>& kdialog) {
    std::error_code unknown;
    const std::filesystem::path path = start;
    const bool isFolder = std::filesystem::is_directory(path, unknown);
    const std::string folder = isFolder ? start : path.parent_path().string();
    std::string choice;
    if (askPortal(title, folder, chooseFolder, choice) == DialogOutcome::Answered) return choice;
    for (const std::vector<std::string>& program : {zenity, kdialog}) {
        choice.clear();
        if (runDialog(program, choice) == DialogOutcome::Answered) return choice;
    }
    currentDialogProblem = kNoDialogText;
    return {};
}

std::string orCurrent(const std::string& path) {
    return path.empty() ? "." : path;
}

// Adds the start path to zenity's arguments. A folder needs a final slash: without it, zenity --filename opens the
// parent folder and selects the folder there.
std::vector<std::string> startingAt(const std::string& path, std::vector<std::string> zenity) {
    std::error_code unknown;
    const bool folder = std::filesystem::is_directory(path, unknown) && !path.ends_with('/');
    if (!path.empty()) zenity.push_back("--filename=" + path + (folder ? "/" : ""));
    return zenity;
}

} // namespace

std::string browseForFolder(const std::string& title, const std::string& startPath) {
    return askUser(true, title, startPath,
                   startingAt(startPath, {"zenity", "--file-selection", "--directory", "--title=" + title}),
                   {"kdialog", "--title", title, "--getexistingdirectory", orCurrent(startPath)});
}

std::string pickProjectFile(const std::string& title, const std::string& initialPath) {
    const std::string filter = std::string("--file-filter=") + kProjectFilterText + " | " + kProjectFilterPattern;
    return askUser(false, title, initialPath,
                   startingAt(initialPath, {"zenity", "--file-selection", "--title=" + title, filter}),
                   {"kdialog", "--title", title, "--getopenfilename", orCurrent(initialPath), kProjectFilterText});
}
