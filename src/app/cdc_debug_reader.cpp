#include "app/cdc_debug_reader.h"

void CdcDebugReader::stop() {
    if (!running.exchange(false)) {
        return;
    }
    if (port) {
        port->cancelReads();
    }
    if (thread.joinable()) {
        thread.join();
    }
    if (port) {
        port->close();
        port.reset();
    }
}
