// What the program itself says to configuration files, for comparison with the schemas' verdicts.
//   config-verdict config|buttons|hid_event_map FILE...   one line a file: "ok", or the message that refuses it
//   config-verdict defaults                               the settings' defaults, "hid.scanIntervalMs 1000" a line

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/usb_ids.h"

#include <iostream>
#include <string>
#include <string_view>

namespace {

/// To the configuration, the boards' ids are text; what reads them is the start of the boards' manager.
bool acceptIds(const HidConfig& hid, std::string& error) {
    error = invalidUsbIds;
    return parseUsbIds(hid.vid, hid.pid).has_value();
}

bool accept(std::string_view kind, const std::string& path, std::string& error) {
    if (kind == "config") {
        AppConfig config;
        return loadAppConfig(path, config, error) && acceptIds(config.hid, error);
    }
    if (kind == "buttons") {
        return ButtonConfig().load(path, error);
    }
    return HidEventMap().load(path, error);
}

void printBacklight(const BacklightProfile& backlight) {
    std::cout << "backlight.mode " << backlight.mode << "\nbacklight.min " << backlight.min << "\nbacklight.max "
              << backlight.max << "\nbacklight.default " << backlight.defaultValue << "\nbacklight.value "
              << backlight.value << "\nbacklight.scale " << backlight.scale << '\n';
}

void printEffect(const char* name, const LedEffect& effect) {
    std::cout << name << ".effect " << effect.effect << '\n'
              << name << ".brightness " << effect.brightness << '\n'
              << name << ".count " << effect.param0 << '\n'
              << name << ".periodMs " << effect.param1 << '\n'
              << name << ".level " << effect.param2 << '\n';
}

void printDefaults() {
    const AppConfig config;
    std::cout << "hid.readIntervalMs " << config.hid.readIntervalMs << "\nhid.scanIntervalMs "
              << config.hid.scanIntervalMs << "\nhid.trace " << config.hid.trace << "\nmappings.hidEventMapPath "
              << config.mappings.hidEventMapPath << "\nmobiflight.enabled " << config.mobiflight.enabled
              << "\nmobiflight.clientName " << config.mobiflight.clientName << "\nmobiflight.commandChannel "
              << config.mobiflight.commandChannel << "\nmobiflight.responseChannel "
              << config.mobiflight.responseChannel << "\nmobiflight.lvarsChannel " << config.mobiflight.lvarsChannel
              << "\nmobiflight.rpnRateLimitMs " << config.mobiflight.rpnRateLimitMs << "\nmobiflight.mapHoldRepeatMs "
              << config.mobiflight.mapHoldRepeatMs << "\ncdc.enabled " << config.cdc.enabled << "\ncdc.comPort "
              << config.cdc.comPort << "\nlogging.debug " << config.logging.debug << "\noutputs.debounceMs "
              << config.outputs.debounceMs << "\noutputs.defaultProfile " << config.outputs.defaultProfile << '\n';
    const OutputProfile profile = makeDefaultProfile();
    printBacklight(profile.backlight);
    printEffect("simDisconnected", profile.simDisconnected);
    printEffect("batteryOff", profile.batteryOff);
    const DeviceEntry device;
    std::cout << "device.boardId " << device.boardId << "\ndevice.index " << device.index << "\ndevice.role "
              << device.role << "\ndevice.ledProfile " << device.ledProfile << '\n';
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view kind = argc > 1 ? argv[1] : "";
    if (kind == "defaults") {
        printDefaults();
        return 0;
    }
    if (argc < 3 || (kind != "config" && kind != "buttons" && kind != "hid_event_map")) {
        std::cerr << "usage: config-verdict config|buttons|hid_event_map FILE...\n       config-verdict defaults\n";
        return 2;
    }
    for (int i = 2; i < argc; ++i) {
        std::string error;
        std::cout << (accept(kind, argv[i], error) ? "ok" : error) << '\n';
    }
    return 0;
}
