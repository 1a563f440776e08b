#pragma once

#include "tests/support/temp_folder.h"
#include "tests/windows/installed_bridge.h"
#include "tests/windows/surviving_control_c.h"

#include <cpp-httplib/httplib.h>
#include <gtest/gtest.h>

#include <functional>
#include <regex>

/// The command line that runs vantrel.exe with these words.
inline std::wstring vantrelCommand(const std::wstring& words) {
    const std::string program = FileSystem::join(FileSystem::parentPath(builtExecutable()), "vantrel.exe");
    return L'"' + FileSystem::fromBytes(program).wstring() + L"\" " + words;
}

/// No code page has all of this name.
inline const std::wstring worldWideName =
    L"J\u00FCrgen \u041A\u0438\u0440\u0438\u043B\u043B\u0438\u0446\u0430 \u65E5\u672C";

/// A run of vantrel.exe that serves a page, and an independent client of that page.
class ServedPage {
public:
    /// `words`: the command with its options.
    explicit ServedPage(const std::wstring& words) {
        const HANDLE output =
            CreateFileA(outputPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
        process = std::make_unique<ChildProcess>(vantrelCommand(words + L" --no-browser --port 0"),
                                                 Streams{nullptr, output, output});
        CloseHandle(output);
        std::smatch match;
        std::string text;
        const std::regex address("http://127\\.0\\.0\\.1:(\\d+)/#([0-9A-F]+)");
        if (waitUntil([&] { return std::regex_search(text = printed(), match, address); }, std::chrono::seconds(60))) {
            port = std::stoi(match[1]);
            client = std::make_unique<httplib::Client>("127.0.0.1", port);
            client->set_read_timeout(60);
            token = {{"X-Page-Token", match[2]}};
        }
    }

    bool isUp() const { return client != nullptr; }

    std::string printed() const {
        std::string text;
        FileSystem::readFile(outputPath, text);
        return text;
    }

    /// The answer's status; 0 without one.
    int get(const std::string& path, std::string& body) {
        const httplib::Result result = client->Get(path);
        body = result ? result->body : "";
        return result ? result->status : 0;
    }

    /// Carries out an action of the page. Empty, or why it failed.
    std::string act(const std::string& json) {
        httplib::Client another("127.0.0.1", port);
        const httplib::Result result = another.Post("/api/action", token, json, "application/json");
        if (!result) {
            return "no answer";
        }
        return result->status == 200 ? "" : result->body;
    }

    /// Listens as a tab does until the program ends. Calls `onText` with all that has come, again and again.
    void listen(const std::function<void(const std::string& received)>& onText) {
        std::string received;
        client->Get("/api/events", token, [&](const char* piece, std::size_t length) {
            received.append(piece, length);
            onText(received);
            return true;
        });
    }

    DWORD exitCode() const { return process->exitCode(); }

private:
    const TempFolder folder;
    const std::string outputPath = folder.path("output.txt");
    const SurvivingControlC controlC;
    std::unique_ptr<ChildProcess> process;
    int port = 0;
    std::unique_ptr<httplib::Client> client;
    httplib::Headers token;
};
