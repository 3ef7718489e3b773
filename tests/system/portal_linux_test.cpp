// Tests the file dialog of the desktop portal. The test starts a private D-Bus daemon and runs a fake portal on it.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <systemd/sd-bus.h>

#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/dialog_problem.h"
#include "system/operating_system.h"

namespace {

struct Reply {
    unsigned version = 4;
    unsigned response = 0;
    const char* uri = "";
    std::chrono::milliseconds dialogTime{0};
    std::string asked = {}; // the values of the call; set by the fake portal
};

// Returns the values of a call, each followed by "|".
std::string valuesOf(sd_bus_message* call) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = ::open_memstream(&text, &size);
    sd_bus_message_dump(call, stream, SD_BUS_MESSAGE_DUMP_SUBTREE_ONLY);
    std::fclose(stream);
    const std::string dump(text, size);
    std::free(text);
    const std::regex value("(STRING|BOOLEAN|BYTE|UINT32) \"?([^\";]*)\"?;");
    std::string values;
    for (std::sregex_iterator found(dump.begin(), dump.end(), value), end; found != end; ++found)
        values += found->str(2) + "|";
    return values;
}

int answer(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
    auto& reply = *static_cast<Reply*>(data);
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "Get") > 0)
        return sd_bus_reply_method_return(call, "v", "u", reply.version);
    reply.asked = valuesOf(call);
    std::string sender = sd_bus_message_get_sender(call) + 1;
    sender.replace(sender.find('.'), 1, "_");
    const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/volo";
    sd_bus_reply_method_return(call, "o", request.c_str());
    std::this_thread::sleep_for(reply.dialogTime);
    return sd_bus_emit_signal(sd_bus_message_get_bus(call), request.c_str(), "org.freedesktop.portal.Request",
                              "Response", "ua{sv}", reply.response, 2, "x", "s", "y", "uris", "as", 1, reply.uri);
}

class Portal : public testing::Test {
  protected:
    Portal() {
        const std::string output = (folder_ / "bus").string();
        const std::string start = "dbus-daemon --session --fork --print-address=1 --print-pid=1 > '" + output + "'";
        EXPECT_EQ(std::system(start.c_str()), 0);
        std::ifstream(output) >> address_ >> daemon_;
        const auto zenity = folder_.write("zenity", "#!/bin/sh\necho /from-zenity\n");
        std::filesystem::permissions(zenity, std::filesystem::perms::owner_all);
    }
    ~Portal() override {
        if (daemon_ > 0) ::kill(daemon_, SIGTERM);
    }

    // Shows a dialog while a fake portal on the bus gives this reply. Returns the user's choice.
    std::string ask(bool chooseFolder, Reply& reply) {
        sd_bus* bus = nullptr;
        sd_bus_new(&bus);
        sd_bus_set_address(bus, address_.c_str());
        sd_bus_set_bus_client(bus, 1);
        EXPECT_GE(sd_bus_start(bus), 0);
        sd_bus_add_object(bus, nullptr, "/org/freedesktop/portal/desktop", answer, &reply);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.portal.Desktop", 0), 0);
        std::string choice;
        {
            const ScopedEnvironment busAddress("DBUS_SESSION_BUS_ADDRESS", address_);
            const ScopedEnvironment path("PATH", folder_.string());
            const std::jthread portal([bus](const std::stop_token& ended) {
                while (!ended.stop_requested())
                    if (sd_bus_process(bus, nullptr) == 0) sd_bus_wait(bus, 20000);
            });
            choice = chooseFolder ? browseForFolder("Pick", "/tmp") : pickProjectFile("Add", "/a b/p.zantorproj");
        }
        sd_bus_flush_close_unref(bus);
        return choice;
    }

    TemporaryFolder folder_;
    std::string address_;
    pid_t daemon_ = 0;
};

TEST_F(Portal, GivesTheChoiceAndLeavesTheRestToZenity) {
    const std::string asked = "|Pick|handle_token|volo|directory|true|current_folder|47|116|109|112|0|"; // "/tmp"
    const struct {
        bool chooseFolder;
        Reply reply;
        std::string choice, asked;
    } cases[] = {
        {true, {4, 0, "file:///a%20b/%C3%BC"}, "/a b/\xC3\xBC", asked},
        {true, {4, 1, ""}, "", asked},
        {true, {4, 2, ""}, "/from-zenity", asked},                     // the portal could not show a dialog
        {true, {4, 2, "", std::chrono::milliseconds(600)}, "", asked}, // the user closed it with Escape
        {true, {2, 0, "file:///p"}, "/from-zenity", ""},               // version 2 of the portal cannot choose folders
        {false,
         {2, 0, "file:///p"},
         "/p",
         "|Add|handle_token|volo|directory|false|current_folder|47|97|32|98|0|filters|VOLO Project (*.zantorproj)|0|"
         "*.zantorproj|"},
    };
    for (auto [chooseFolder, reply, choice, call] : cases) {
        EXPECT_EQ(ask(chooseFolder, reply), choice) << reply.uri;
        EXPECT_EQ(reply.asked, call);
        EXPECT_EQ(takeDialogProblem(), "");
    }
}

} // namespace
