#include "simulation/simulator/event_facts.h"

#include <algorithm>
#include <array>

namespace {

using EventFacts::DisplayEvent;
using EventFacts::KeyEvent;
using EventFacts::Variable;

constexpr std::array keyEvents{
    // Autopilot: modes
    KeyEvent{"AP_MASTER", "", "autopilot on or off"},
    KeyEvent{"TOGGLE_FLIGHT_DIRECTOR", "", "flight director on or off"},
    KeyEvent{"YAW_DAMPER_TOGGLE", "", "yaw damper on or off"},
    KeyEvent{"AP_HDG_HOLD", "", "HDG key"},
    KeyEvent{"AP_NAV1_HOLD", "", "NAV key"},
    KeyEvent{"AP_APR_HOLD", "", "APR key: localizer and glideslope"},
    KeyEvent{"AP_BC_HOLD", "", "BC key: back course"},
    KeyEvent{"AP_ALT_HOLD", "", "ALT key"},
    KeyEvent{"AP_VS_HOLD", "", "VS key"},
    KeyEvent{"FLIGHT_LEVEL_CHANGE", "", "FLC key; leaves the selected airspeed as it is"},
    KeyEvent{"AUTO_THROTTLE_TO_GA", "", "TO/GA key"},
    KeyEvent{"TOGGLE_GPS_DRIVES_NAV1", "", "CDI key: follow GPS or NAV1"},
    // Autopilot: references
    KeyEvent{"AP_ALT_VAR_INC", "feet", "selected altitude up by that step"},
    KeyEvent{"AP_ALT_VAR_DEC", "feet", "selected altitude down by that step"},
    KeyEvent{"AP_ALT_VAR_SET_ENGLISH", "feet", "selected altitude"},
    KeyEvent{"AP_VS_VAR_INC", "", "selected vertical speed up one step"},
    KeyEvent{"AP_VS_VAR_DEC", "", "selected vertical speed down one step"},
    KeyEvent{"AP_VS_VAR_SET_ENGLISH", "feet per minute", "selected vertical speed"},
    KeyEvent{"AP_VS_VAR_SET_CURRENT", "", "selected vertical speed is the one flown now"},
    KeyEvent{"AP_SPD_VAR_INC", "", "selected airspeed up one step"},
    KeyEvent{"AP_SPD_VAR_DEC", "", "selected airspeed down one step"},
    KeyEvent{"AP_SPD_VAR_SET", "knots", "selected airspeed, whole knots"},
    KeyEvent{"AP_PITCH_REF_INC_UP", "", "pitch reference up: the NOSE UP wheel"},
    KeyEvent{"AP_PITCH_REF_INC_DN", "", "pitch reference down: the NOSE DN wheel"},
    KeyEvent{"HEADING_BUG_INC", "", "heading bug one degree right"},
    KeyEvent{"HEADING_BUG_DEC", "", "heading bug one degree left"},
    KeyEvent{"HEADING_BUG_SET", "degrees", "heading bug, whole degrees from 0 to 360"},
    // Altimeter
    KeyEvent{"KOHLSMAN_INC", "", "pressure knob up one step"},
    KeyEvent{"KOHLSMAN_DEC", "", "pressure knob down one step"},
    KeyEvent{"KOHLSMAN_SET", "sixteenths of a millibar", "pressure of all altimeters"},
    KeyEvent{"BAROMETRIC", "", "local pressure below 18000 feet, standard above"},
    KeyEvent{"BAROMETRIC_STD_PRESSURE", "altimeter index", "standard pressure of that altimeter"},
    // Course
    KeyEvent{"VOR1_OBI_INC", "", "course 1 one degree right"},
    KeyEvent{"VOR1_OBI_DEC", "", "course 1 one degree left"},
    KeyEvent{"VOR1_SET", "degrees", "course 1"},
    KeyEvent{"VOR2_OBI_INC", "", "course 2 one degree right"},
    KeyEvent{"VOR2_OBI_DEC", "", "course 2 one degree left"},
    KeyEvent{"VOR2_SET", "degrees", "course 2"},
    // Radios; the knobs tune the standby frequency
    KeyEvent{"COM_STBY_RADIO_SWAP", "", "COM1 active and standby change places"},
    KeyEvent{"COM2_RADIO_SWAP", "", "COM2 active and standby change places"},
    KeyEvent{"COM_RADIO_WHOLE_INC", "", "COM1 up 1 MHz"},
    KeyEvent{"COM_RADIO_WHOLE_DEC", "", "COM1 down 1 MHz"},
    KeyEvent{"COM_RADIO_FRACT_INC", "", "COM1 up one kHz step"},
    KeyEvent{"COM_RADIO_FRACT_DEC", "", "COM1 down one kHz step"},
    KeyEvent{"COM1_VOLUME_INC", "", "COM1 louder"},
    KeyEvent{"COM1_VOLUME_DEC", "", "COM1 quieter"},
    KeyEvent{"NAV1_RADIO_SWAP", "", "NAV1 active and standby change places"},
    KeyEvent{"NAV2_RADIO_SWAP", "", "NAV2 active and standby change places"},
    KeyEvent{"NAV1_RADIO_WHOLE_INC", "", "NAV1 up 1 MHz"},
    KeyEvent{"NAV1_RADIO_WHOLE_DEC", "", "NAV1 down 1 MHz"},
    KeyEvent{"NAV1_RADIO_FRACT_INC", "", "NAV1 up one kHz step"},
    KeyEvent{"NAV1_RADIO_FRACT_DEC", "", "NAV1 down one kHz step"},
    KeyEvent{"NAV1_VOLUME_INC", "", "NAV1 louder"},
    KeyEvent{"NAV1_VOLUME_DEC", "", "NAV1 quieter"},
    KeyEvent{"XPNDR_IDENT_ON", "", "transponder ident"},
};

constexpr std::array displayEvents{
    DisplayEvent{"SOFTKEYS_1", "leftmost softkey"},
    DisplayEvent{"SOFTKEYS_2", "second softkey"},
    DisplayEvent{"SOFTKEYS_3", "third softkey"},
    DisplayEvent{"SOFTKEYS_4", "fourth softkey"},
    DisplayEvent{"SOFTKEYS_5", "fifth softkey"},
    DisplayEvent{"SOFTKEYS_6", "sixth softkey"},
    DisplayEvent{"SOFTKEYS_7", "seventh softkey"},
    DisplayEvent{"SOFTKEYS_8", "eighth softkey"},
    DisplayEvent{"SOFTKEYS_9", "ninth softkey"},
    DisplayEvent{"SOFTKEYS_10", "tenth softkey"},
    DisplayEvent{"SOFTKEYS_11", "eleventh softkey"},
    DisplayEvent{"SOFTKEYS_12", "rightmost softkey"},
    DisplayEvent{"FMS_Upper_INC", "inner FMS knob right"},
    DisplayEvent{"FMS_Upper_DEC", "inner FMS knob left"},
    DisplayEvent{"FMS_Upper_PUSH", "FMS knob push: cursor on or off"},
    DisplayEvent{"FMS_Lower_INC", "outer FMS knob right"},
    DisplayEvent{"FMS_Lower_DEC", "outer FMS knob left"},
    DisplayEvent{"DIRECTTO", "direct-to key"},
    DisplayEvent{"MENU_Push", "MENU key"},
    DisplayEvent{"FPL_Push", "FPL key"},
    DisplayEvent{"PROC_Push", "PROC key"},
    DisplayEvent{"CLR", "CLR key"},
    DisplayEvent{"CLR_Long", "CLR key, held: back to the map"},
    DisplayEvent{"ENT_Push", "ENT key"},
    DisplayEvent{"RANGE_INC", "map range up"},
    DisplayEvent{"RANGE_DEC", "map range down"},
    DisplayEvent{"JOYSTICK_PUSH", "joystick push: map pointer on or off"},
    DisplayEvent{"JOYSTICK_UP", "joystick up"},
    DisplayEvent{"JOYSTICK_DOWN", "joystick down"},
    DisplayEvent{"JOYSTICK_LEFT", "joystick left"},
    DisplayEvent{"JOYSTICK_RIGHT", "joystick right"},
    DisplayEvent{"ActivateMapCursor", "map pointer on"},
    DisplayEvent{"DeactivateMapCursor", "map pointer off"},
    DisplayEvent{"COM_Large_INC", "outer COM knob right"},
    DisplayEvent{"COM_Large_DEC", "outer COM knob left"},
    DisplayEvent{"COM_Small_INC", "inner COM knob right"},
    DisplayEvent{"COM_Small_DEC", "inner COM knob left"},
    DisplayEvent{"COM_Push", "COM knob push: tune the other COM"},
    DisplayEvent{"COM_Switch", "COM active and standby change places"},
    DisplayEvent{"COM_Switch_Long", "COM swap key, held: the emergency frequency"},
    DisplayEvent{"NAV_Large_INC", "outer NAV knob right"},
    DisplayEvent{"NAV_Large_DEC", "outer NAV knob left"},
    DisplayEvent{"NAV_Small_INC", "inner NAV knob right"},
    DisplayEvent{"NAV_Small_DEC", "inner NAV knob left"},
    DisplayEvent{"NAV_Push", "NAV knob push: tune the other NAV"},
    DisplayEvent{"NAV_Switch", "NAV active and standby change places"},
    DisplayEvent{"VOL_1_INC", "NAV louder"},
    DisplayEvent{"VOL_1_DEC", "NAV quieter"},
    DisplayEvent{"VOL_2_INC", "COM louder"},
    DisplayEvent{"VOL_2_DEC", "COM quieter"},
    DisplayEvent{"CRS_INC", "course right"},
    DisplayEvent{"CRS_DEC", "course left"},
    DisplayEvent{"CRS_PUSH", "course to the station"},
    DisplayEvent{"BARO_INC", "altimeter pressure up"},
    DisplayEvent{"BARO_DEC", "altimeter pressure down"},
};

constexpr std::array commonDisplayEvents{DisplayEvent{"AS1000_VNAV_TOGGLE", "VNV key"}};

constexpr std::array variables{
    Variable{"HEADING INDICATOR", "degrees", "heading that the compass card shows"},
    Variable{"AIRSPEED INDICATED", "knots", "airspeed that the instrument shows"},
    Variable{"AUTOPILOT HEADING LOCK DIR", "degrees", "heading bug"},
    Variable{"AUTOPILOT ALTITUDE LOCK VAR", "feet", "selected altitude"},
    Variable{"AUTOPILOT FLIGHT LEVEL CHANGE", "bool", "the mode FLC is active"},
    Variable{"AUTOPILOT VERTICAL HOLD", "bool", "the mode VS is active"},
};

template <typename Facts>
auto factOf(const Facts& facts, std::string_view name) -> decltype(facts.data()) {
    const auto fact = std::find_if(facts.begin(), facts.end(), [&](const auto& each) { return each.name == name; });
    return fact == facts.end() ? nullptr : &*fact;
}

} // namespace

namespace EventFacts {

const KeyEvent* keyEvent(std::string_view name) {
    return factOf(keyEvents, name);
}

const DisplayEvent* displayEvent(std::string_view name) {
    for (const std::string_view display : {"AS1000_PFD_", "AS1000_MFD_"}) {
        if (name.starts_with(display)) {
            return factOf(displayEvents, name.substr(display.size()));
        }
    }
    return factOf(commonDisplayEvents, name);
}

const Variable* variable(std::string_view name) {
    return factOf(variables, name);
}

} // namespace EventFacts
