#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_manager.h"
#include "mobiflight/mobiflight_client.h"
#include "sim/shared_sim_state.h"
#include "sim/simconnect_client.h"

/// What the mapping's workers work with. Nothing is owned, anything may be null, and all of it outlives the engine's
/// run. `MappingEngine::start` writes it before a worker runs; from then on it is read without a lock.
struct MappingContext {
    const AppConfig* config = nullptr;
    HidManager* hid = nullptr;
    SimConnectClient* simConnect = nullptr;
    MobiFlightClient* mobiflight = nullptr;
    const ButtonConfig* buttons = nullptr;
    const HidEventMap* eventMap = nullptr;
    SharedSimState* simState = nullptr;
};
