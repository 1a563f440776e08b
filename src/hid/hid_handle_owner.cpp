#include "hid/hid_handle_owner.h"

#include <utility>

HidHandleOwner::~HidHandleOwner() {
    close();
}

HidHandleOwner::HidHandleOwner(HidHandleOwner&& other) noexcept
    : transport(other.transport), handle(std::exchange(other.handle, invalidHidHandle)) {}

HidHandleOwner& HidHandleOwner::operator=(HidHandleOwner&& other) noexcept {
    std::swap(transport, other.transport);
    std::swap(handle, other.handle);
    return *this;
}

void HidHandleOwner::close() {
    if (isOpen()) {
        transport->close(std::exchange(handle, invalidHidHandle));
    }
}

HidHandleOwner openForReading(const HidTransport& transport, const std::string& path, HidMode mode) {
    HidHandleOwner owner(transport, transport.open(path, HidAccess::ReadWrite, mode));
    return owner.isOpen() ? std::move(owner)
                          : HidHandleOwner(transport, transport.open(path, HidAccess::ReadOnly, mode));
}
