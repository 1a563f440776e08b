#pragma once

#include "hid/hid_protocol.h"
#include "platform/platform.h"

// What a board answers about itself. False when it doesn't answer, or not with such a report.

bool readDeviceInfo(const HidTransport& transport, HidHandle handle, HidProtocol::DeviceInfo& info);
bool readProtocolInfo(const HidTransport& transport, HidHandle handle, HidProtocol::ProtocolInfo& info);
