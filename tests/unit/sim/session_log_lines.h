#pragma once

#include <string>

// What the fixtures' announcements and the session log when a session begins and ends.

inline const std::string announcedUp = "[INFO] announced up";
inline const std::string announcedDown = "[INFO] announced down";
inline const std::string connectedLine = "[INFO] SimConnect connected";
