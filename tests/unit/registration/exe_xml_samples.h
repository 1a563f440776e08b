#pragma once

// Texts of EXE.xml files for the tests, with CR LF as the simulator writes them.

#include <string>

namespace Samples {

/// What comes before the entries.
inline const std::string head = "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\r\n"
                                "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\r\n"
                                "    <Descr>SimConnect</Descr>\r\n"
                                "    <Filename>EXE.xml</Filename>\r\n"
                                "    <Disabled>False</Disabled>\r\n"
                                "    <Launch.ManualLoad>False</Launch.ManualLoad>\r\n";

inline const std::string tail = "</SimBase.Document>\r\n";

/// An entry of another program, with that name as the file writes it.
inline std::string entryOf(const std::string& name) {
    return std::string("    <Launch.Addon>\r\n        <Name>")
        .append(name)
        .append("</Name>\r\n        <Path>C:\\Tools\\tool.exe</Path>\r\n    </Launch.Addon>\r\n");
}

/// The entry that the tests register.
inline const std::string name = "Panel Bridge";
inline const std::string path = "C:\\Panels\\bridge.exe";
inline const std::string commandLine = "--config \"C:\\Panels\\config.json\"";
inline const std::string entry = "    <Launch.Addon>\r\n"
                                 "        <Name>Panel Bridge</Name>\r\n"
                                 "        <Disabled>False</Disabled>\r\n"
                                 "        <Path>C:\\Panels\\bridge.exe</Path>\r\n"
                                 "        <CommandLine>--config \"C:\\Panels\\config.json\"</CommandLine>\r\n"
                                 "    </Launch.Addon>\r\n";

} // namespace Samples
