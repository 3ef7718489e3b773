// The file dialog of the desktop portal, against a portal of the test on a bus of its own.

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/dialog_problem.h"
#include "system/operating_system.h"
#include "system/spawn_linux.h"

namespace {

struct Reply {
    unsigned version = 4;
    unsigned response = 0;
    const char* uri = "";
    std::string asked = {}; // title, options; filled in by the portal
};

// What the dialog was asked for, as "title|key=value|...".
std::string describe(sd_bus_message* call) {
    const char *parent = nullptr, *title = nullptr, *key = nullptr, *text = nullptr;
    sd_bus_message_read(call, "ss", &parent, &title);
    std::string all = title;
    sd_bus_message_enter_container(call, 'a', "{sv}");
    while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
        sd_bus_message_read(call, "s", &key);
        const std::string name = key;
        int flag = 0;
        std::size_t size = 0;
        const void* bytes = nullptr;
        sd_bus_message_enter_container(call, 'v', nullptr);
        if (name == "directory") {
            sd_bus_message_read(call, "b", &flag);
            all += flag != 0 ? "|folder" : "|file";
        } else if (name == "current_folder") {
            sd_bus_message_read_array(call, 'y', &bytes, &size);
            all += "|" + std::string(static_cast<const char*>(bytes));
        } else if (name == "filters") {
            unsigned kind = 1;
            sd_bus_message_read(call, "a(sa(us))", 1, &key, 1, &kind, &text);
            all += std::string("|") + key + "|" + text;
        } else {
            sd_bus_message_read(call, "s", &text);
        }
        sd_bus_message_exit_container(call);
        sd_bus_message_exit_container(call);
    }
    return all;
}

int answer(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
    auto& reply = *static_cast<Reply*>(data);
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "Get") > 0)
        return sd_bus_reply_method_return(call, "v", "u", reply.version);
    reply.asked = describe(call);
    std::string sender = sd_bus_message_get_sender(call) + 1;
    sender.replace(sender.find('.'), 1, "_");
    const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/volo";
    sd_bus_reply_method_return(call, "o", request.c_str());
    return sd_bus_emit_signal(sd_bus_message_get_bus(call), request.c_str(), "org.freedesktop.portal.Request",
                              "Response", "ua{sv}", reply.response, 2, "x", "s", "y", "uris", "as", 1, reply.uri);
}

class Portal : public testing::Test {
  protected:
    Portal() {
        int output[2];
        EXPECT_EQ(::pipe(output), 0);
        daemon_ = spawnProgram({"dbus-daemon", "--session", "--nofork", "--print-address=1"}, output[1]).process;
        for (char byte = 0; ::read(output[0], &byte, 1) == 1 && byte != '\n';)
            address_ += byte;
        ::close(output[0]);
        ::close(output[1]);
        const auto zenity = folder_.write("zenity", "#!/bin/sh\necho /from-zenity\n");
        std::filesystem::permissions(zenity, std::filesystem::perms::owner_all);
    }
    ~Portal() override {
        ::kill(daemon_, SIGTERM);
        ::waitpid(daemon_, nullptr, 0);
    }

    // Shows a dialog while a portal on the bus gives this reply.
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
    pid_t daemon_ = -1;
};

TEST_F(Portal, GivesTheChoiceAndLeavesTheRestToZenity) {
    const struct {
        bool chooseFolder;
        Reply reply;
        const char *choice, *asked;
    } cases[] = {
        {true, {4, 0, "file:///a%20b/%C3%BC"}, "/a b/\xC3\xBC", "Pick|folder|/tmp"},
        {false, {2, 0, "file:///p"}, "/p", "Add|file|/a b|VOLO Project (*.zantorproj)|*.zantorproj"},
        {true, {4, 1, ""}, "", "Pick|folder|/tmp"},
        {true, {4, 2, ""}, "/from-zenity", "Pick|folder|/tmp"},
        {true, {2, 0, "file:///p"}, "/from-zenity", ""}, // this version knows no folders
    };
    for (auto [chooseFolder, reply, choice, asked] : cases) {
        EXPECT_EQ(ask(chooseFolder, reply), choice) << reply.uri;
        EXPECT_EQ(reply.asked, asked);
        EXPECT_EQ(takeDialogProblem(), "");
    }
}

} // namespace
