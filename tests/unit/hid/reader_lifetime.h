#pragma once

#include "platform/platform.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

/// Keeps in which order the handles that have a reader are closed and the readers are destroyed.
class ReaderLifetimes {
public:
    /// The same transport, watched. This object must outlive it and its readers.
    HidTransport watch(HidTransport transport) {
        transport.makeReader = watched(transport.makeReader);
        if (transport.makeSinglePendingReader) {
            transport.makeSinglePendingReader = watched(transport.makeSinglePendingReader);
        }
        const auto close = transport.close;
        transport.close = [this, close](HidHandle handle) {
            close(handle);
            if (hasReader(handle)) {
                add("handle closed");
            }
        };
        return transport;
    }

    std::vector<std::string> happenings() {
        const std::lock_guard lock(mutex);
        return record;
    }

private:
    using ReaderMaker = std::function<HidReader(HidHandle handle)>;

    ReaderMaker watched(const ReaderMaker& makeReader) {
        return [this, makeReader](HidHandle handle) -> HidReader {
            {
                const std::lock_guard lock(mutex);
                handles.insert(handle);
            }
            const std::shared_ptr<void> end(nullptr, [this](void*) { add("reader destroyed"); });
            return [end, reader = makeReader(handle)](std::chrono::milliseconds limit) { return reader(limit); };
        };
    }

    bool hasReader(HidHandle handle) {
        const std::lock_guard lock(mutex);
        return handles.contains(handle);
    }

    void add(const char* what) {
        const std::lock_guard lock(mutex);
        record.emplace_back(what);
    }

    std::mutex mutex;
    std::set<HidHandle> handles;
    std::vector<std::string> record;
};
