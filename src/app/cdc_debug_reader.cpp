#include "app/cdc_debug_reader.h"

#include <utility>

CdcDebugReader::CdcDebugReader(HidTransport systemTransport) : transport(std::move(systemTransport)) {}

void CdcDebugReader::stop() {
    if (!running.exchange(false)) {
        return;
    }
    if (handle != invalidHidHandle) {
        transport.cancelReads(handle);
    }
    if (thread.joinable()) {
        thread.join();
    }
    if (handle != invalidHidHandle) {
        transport.close(handle);
        handle = invalidHidHandle;
    }
}
