#pragma once

#include "platform/platform.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The operations of the client library, by which results are scripted and calls are counted.
enum class SimCall {
    Open,
    Close,
    CallDispatch,
    AddToDataDefinition,
    RequestDataOnSimObject,
    MapClientEventToSimEvent,
    TransmitClientEvent,
    MapClientDataNameToId,
    AddToClientDataDefinition,
    RequestClientData,
    SetClientData,
};

/// The simulator's client library in memory. It writes down every call with all its arguments, gives the results that
/// the test has scripted (success otherwise), and delivers the test's messages from the next dispatch. Sessions are h1,
/// h2, … in the order of their opens; a call on a closed one fails as with the real library. Usable from any thread. It
/// must outlive the users of its record.
class FakeSimConnect {
public:
    using Bytes = std::vector<std::uint8_t>;

    FakeSimConnect() = default;
    FakeSimConnect(const FakeSimConnect&) = delete;
    FakeSimConnect& operator=(const FakeSimConnect&) = delete;

    SimConnectLibrary library() {
        const auto recorded = [this](SimCall call, const char* name) {
            return [this, call, name](SimConnectHandle handle, auto... arguments) {
                return callOn(call, name, handle, arguments...);
            };
        };
        SimConnectLibrary result;
        result.open = [this](SimConnectHandle* handle, const char* name, auto... arguments) {
            return openSession(handle, fields(field(name), arguments...));
        };
        result.close = [this](SimConnectHandle handle) { return closeSession(handle); };
        result.callDispatch = [this](auto... arguments) { return dispatch(arguments...); };
        result.addToDataDefinition = recorded(SimCall::AddToDataDefinition, "AddToDataDefinition");
        result.requestDataOnSimObject = recorded(SimCall::RequestDataOnSimObject, "RequestDataOnSimObject");
        result.mapClientEventToSimEvent = recorded(SimCall::MapClientEventToSimEvent, "MapClientEventToSimEvent");
        result.transmitClientEvent = recorded(SimCall::TransmitClientEvent, "TransmitClientEvent");
        result.mapClientDataNameToId = recorded(SimCall::MapClientDataNameToId, "MapClientDataNameToID");
        result.addToClientDataDefinition = recorded(SimCall::AddToClientDataDefinition, "AddToClientDataDefinition");
        result.requestClientData = recorded(SimCall::RequestClientData, "RequestClientData");
        result.setClientData = [this](auto... arguments) { return setClientData(arguments...); };
        return result;
    }

    // Scripts.

    /// The results of the next calls of this operation, before it succeeds again.
    void script(SimCall call, std::vector<SimConnectResult> next) {
        const std::lock_guard lock(mutex);
        scripts[call].assign(next.begin(), next.end());
    }

    /// Has the operation give this result from now on, after what is scripted.
    void setResult(SimCall call, SimConnectResult result) {
        const std::lock_guard lock(mutex);
        results[call] = result;
    }

    /// Called in every call, on the caller's thread, once the call is written down; may throw or wait.
    void setHook(std::function<void(SimCall)> hook) {
        const std::lock_guard lock(mutex);
        this->hook = std::move(hook);
    }

    // Messages, whole or by kind. The next dispatch on an open session hands them over in order; they go with it.

    void deliver(Bytes message) {
        const std::lock_guard lock(mutex);
        messages.push_back(std::move(message));
    }

    void deliverQuit() { deliver(message(simConnectRecvQuit, {})); }
    void deliverBattery(std::int32_t value) {
        Bytes data(sizeof value);
        std::memcpy(data.data(), &value, sizeof value);
        deliver(dataMessage(simConnectRecvSimobjectData, 1, data));
    }
    void deliverClientData(std::uint32_t requestId, const Bytes& data) {
        deliver(dataMessage(simConnectRecvClientData, requestId, data));
    }
    /// A text block as the module writes it: the text and zeros up to `blockSize`.
    void deliverText(std::uint32_t requestId, const std::string& text, std::size_t blockSize) {
        Bytes block(text.begin(), text.end());
        block.resize(std::max(blockSize, text.size()));
        deliverClientData(requestId, block);
    }

    static Bytes message(std::uint32_t id, const Bytes& body) {
        const SimConnectRecv head{static_cast<std::uint32_t>(sizeof head + body.size()), 4, id};
        Bytes bytes(sizeof head + body.size());
        std::memcpy(bytes.data(), &head, sizeof head);
        std::copy(body.begin(), body.end(), bytes.begin() + sizeof head);
        return bytes;
    }

    static Bytes dataMessage(std::uint32_t id, std::uint32_t requestId, const Bytes& data) {
        const std::array<std::uint32_t, 7> words{requestId, 0, 1, 1, 1, 1, 1};
        Bytes body(sizeof words + data.size());
        std::memcpy(body.data(), words.data(), sizeof words);
        std::copy(data.begin(), data.end(), body.begin() + sizeof words);
        return message(id, body);
    }

    // The record.

    /// Every call so far, as in `Open("name", null, 0, null, 0)` or `Close(h1)`. Of the dispatches, which go on all the
    /// time, only those that handed something over or failed.
    std::vector<std::string> calls() {
        const std::lock_guard lock(mutex);
        return record;
    }

    /// The same, and forgets them.
    std::vector<std::string> takeCalls() {
        const std::lock_guard lock(mutex);
        return std::exchange(record, {});
    }

    /// How often the operation was called, dispatches included.
    std::size_t count(SimCall call) {
        const std::lock_guard lock(mutex);
        return counts[call];
    }

    /// The texts written with SetClientData, in order, whatever their results.
    std::vector<std::string> commands() {
        const std::lock_guard lock(mutex);
        return written;
    }

    /// Whether any session is open.
    bool isOpen() {
        const std::lock_guard lock(mutex);
        return std::find(open.begin(), open.end(), true) != open.end();
    }

    /// Whether all delivered messages have been handed over.
    bool allDelivered() {
        const std::lock_guard lock(mutex);
        return messages.empty();
    }

private:
    static std::string field(const char* text) { return text == nullptr ? "null" : '"' + std::string(text) + '"'; }
    static std::string field(const void* pointer) { return pointer == nullptr ? "null" : "pointer"; }
    static std::string field(std::uint32_t number) {
        std::ostringstream text;
        if (number >= 0x1000) {
            text << "0x" << std::hex << std::uppercase;
        }
        text << number;
        return text.str();
    }
    static std::string field(float number) {
        std::ostringstream text;
        text << number;
        return text.str();
    }

    static std::size_t sessionNumber(SimConnectHandle handle) { return reinterpret_cast<std::uintptr_t>(handle); }

    template <typename First, typename... Others>
    static std::string fields(const First& first, const Others&... others) {
        return (first + ... + (", " + field(others)));
    }

    /// Writes down the call, and the command that it writes if any, runs the hook, and gives the result. Both at once,
    /// so that a test that has seen the command finds the call too.
    SimConnectResult enter(SimCall call, const std::string& text, const std::string* command = nullptr) {
        std::function<void(SimCall)> hookNow;
        {
            const std::lock_guard lock(mutex);
            ++counts[call];
            if (!text.empty()) {
                record.push_back(text);
            }
            if (command != nullptr) {
                written.push_back(*command);
            }
            hookNow = hook;
        }
        if (hookNow) {
            hookNow(call);
        }
        const std::lock_guard lock(mutex);
        std::deque<SimConnectResult>& script = scripts[call];
        if (script.empty()) {
            return results[call];
        }
        const SimConnectResult result = script.front();
        script.pop_front();
        return result;
    }

    template <typename... Fields>
    SimConnectResult callOn(SimCall call, const char* name, SimConnectHandle handle, const Fields&... values) {
        return ifOpen(handle, enter(call, callText(name, handle, values...)));
    }

    template <typename... Fields>
    static std::string callText(const char* name, SimConnectHandle handle, const Fields&... values) {
        const std::string session = "h" + std::to_string(sessionNumber(handle));
        return std::string(name) + "(" + fields(session, values...) + ")";
    }

    SimConnectResult ifOpen(SimConnectHandle handle, SimConnectResult result) {
        const std::lock_guard lock(mutex);
        return isOpenLocked(handle) ? result : simConnectRemoteDisconnect;
    }

    // These need the mutex held.
    bool isOpenLocked(SimConnectHandle handle) const {
        const std::size_t number = sessionNumber(handle);
        return number >= 1 && number <= open.size() && open[number - 1];
    }

    SimConnectResult openSession(SimConnectHandle* handle, const std::string& arguments) {
        const SimConnectResult result = enter(SimCall::Open, "Open(" + arguments + ")");
        if (result < 0) {
            return result;
        }
        const std::lock_guard lock(mutex);
        open.push_back(true);
        *handle = reinterpret_cast<SimConnectHandle>(open.size());
        return result;
    }

    SimConnectResult closeSession(SimConnectHandle handle) {
        const SimConnectResult result = callOn(SimCall::Close, "Close", handle);
        const std::lock_guard lock(mutex);
        if (isOpenLocked(handle)) {
            open[sessionNumber(handle) - 1] = false;
        }
        messages.clear();
        return result;
    }

    /// Takes the next message for an open session; none when there is nothing to hand over.
    std::optional<Bytes> takeMessage(SimConnectHandle handle) {
        const std::lock_guard lock(mutex);
        if (messages.empty() || !isOpenLocked(handle)) {
            return std::nullopt;
        }
        Bytes bytes = std::move(messages.front());
        messages.pop_front();
        return bytes;
    }

    void handOver(Bytes bytes, SimConnectDispatchProc proc, void* context) {
        std::uint32_t id = 0;
        if (bytes.size() >= sizeof(SimConnectRecv)) {
            std::memcpy(&id, bytes.data() + offsetof(SimConnectRecv, dwID), sizeof id);
        }
        note("CallDispatch: message " + std::to_string(id) + " of " + std::to_string(bytes.size()));
        // Alone in memory of just its size, so that a sanitizer sees a read past its end.
        bytes.shrink_to_fit();
        proc(reinterpret_cast<SimConnectRecv*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), context);
    }

    SimConnectResult dispatch(SimConnectHandle handle, SimConnectDispatchProc proc, void* context) {
        const SimConnectResult result = enter(SimCall::CallDispatch, "");
        while (std::optional<Bytes> bytes = takeMessage(handle)) {
            handOver(std::move(*bytes), proc, context);
        }
        if (result < 0) {
            note("CallDispatch(h" + std::to_string(sessionNumber(handle)) + ") failed");
        }
        return result;
    }

    void note(const std::string& line) {
        const std::lock_guard lock(mutex);
        record.push_back(line);
    }

    /// The text of a block, with a mark if what follows its zero isn't all zeros.
    static std::string blockText(const void* data, std::uint32_t size) {
        const auto* first = static_cast<const char*>(data);
        const auto* end = first + size;
        const auto* zero = std::find(first, end, '\0');
        const bool padded = zero != end && std::all_of(zero, end, [](char byte) { return byte == '\0'; });
        return std::string(first, zero) + (padded ? "" : "<not padded with zeros>");
    }

    SimConnectResult setClientData(SimConnectHandle handle, std::uint32_t clientDataId, std::uint32_t definitionId,
                                   std::uint32_t flags, std::uint32_t reserved, std::uint32_t unitSize, void* data) {
        const std::string text = blockText(data, unitSize);
        const std::string call =
            callText("SetClientData", handle, clientDataId, definitionId, flags, reserved, unitSize, text.c_str());
        return ifOpen(handle, enter(SimCall::SetClientData, call, &text));
    }

    std::mutex mutex;
    std::vector<bool> open;
    std::deque<Bytes> messages;
    std::map<SimCall, std::deque<SimConnectResult>> scripts;
    std::map<SimCall, SimConnectResult> results;
    std::map<SimCall, std::size_t> counts;
    std::function<void(SimCall)> hook;
    std::vector<std::string> record;
    std::vector<std::string> written;
};
