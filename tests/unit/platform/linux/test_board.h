#pragma once

#include "platform/linux/hidraw_transport.h"
#include "tests/support/temp_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// The other end of a character device that can be made anywhere: a raw pseudo-terminal. What is written here is read
/// from `device` and the other way round; closing it is a hang-up there.
class PseudoTerminal {
public:
    PseudoTerminal() : controller(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        char name[64] = {};
        if (controller < 0 || grantpt(controller) != 0 || unlockpt(controller) != 0 ||
            ptsname_r(controller, name, sizeof name) != 0) {
            throw std::runtime_error("no pseudo-terminal");
        }
        device = name;
        termios settings{};
        tcgetattr(controller, &settings);
        cfmakeraw(&settings);
        tcsetattr(controller, TCSANOW, &settings);
    }
    ~PseudoTerminal() { hangUp(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    bool send(const std::string& bytes) const {
        return ::write(controller, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }

    /// What has been written at `device`. Empty when nobody has it open any more.
    std::string receive() const {
        std::string bytes(64, '\0');
        const ssize_t count = ::read(controller, bytes.data(), bytes.size());
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return bytes;
    }

    void hangUp() {
        if (controller >= 0) {
            ::close(controller);
        }
        controller = -1;
    }

    std::string device;

private:
    int controller;
};

/// A made-up root folder with the parts of /sys and /dev that hold hidraw nodes.
class HidrawTree {
public:
    HidrawTree() {
        folder.makeFolder("sys/class/hidraw");
        folder.makeFolder("dev");
    }

    std::string root() const { return folder.path(); }

    /// Adds a node as the kernel does and gives the resolved folder of its sysfs entry.
    std::string plug(const std::string& instance, const std::string& node, const std::string& deviceFile,
                     const std::string& serial = "") const {
        const std::string device = "sys/devices/usb1/" + instance;
        const std::string nodeFolder = device + "/hidraw/" + node;
        folder.write(device + "/uevent", "DRIVER=hid-generic\nHID_NAME=Panel\nHID_UNIQ=" + serial + "\nMODALIAS=x\n");
        folder.write(nodeFolder + "/uevent", "DEVNAME=" + node + "\n");
        struct stat status {};
        stat(deviceFile.c_str(), &status);
        writeDeviceNumber(nodeFolder, status.st_rdev);
        link("../../../" + instance, nodeFolder + "/device");
        link("../../../" + nodeFolder, "sys/class/hidraw/" + node);
        link(deviceFile, "dev/" + node);
        return std::filesystem::canonical(folder.path(nodeFolder));
    }

    void unplug(const std::string& instance, const std::string& node) const {
        std::filesystem::remove_all(folder.path("sys/devices/usb1/" + instance));
        std::filesystem::remove(folder.path("sys/class/hidraw/" + node));
        std::filesystem::remove(folder.path("dev/" + node));
    }

    void writeDeviceNumber(const std::string& nodeFolder, dev_t number) const {
        folder.write(nodeFolder + "/dev", std::to_string(major(number)) + ":" + std::to_string(minor(number)) + "\n");
    }

    void link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, folder.path(name));
    }

    const TempFolder folder;
};

/// A board with one made-up node, which takes and gives bytes but knows no HID requests.
class TestBoard : public PseudoTerminal {
public:
    HidTransport transport() const { return makeHidrawTransport(tree.root()); }

    static constexpr const char* instance = "0003:2E8A:000A.0005";

    const HidrawTree tree;
    const std::string path = tree.plug(instance, "hidraw3", device);
};

constexpr std::uint32_t closedHandleError = EBADF;
