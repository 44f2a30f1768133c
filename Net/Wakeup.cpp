#include "Net/Wakeup.h"

#include "Vor/Exception.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace Net {

Wakeup::Wakeup()
    : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor < 0) {
        Vor::Throw(yERROR, "there are too many open files");
    }
}

Wakeup::~Wakeup() {
    close(descriptor);
}

// An error means that the counter is full, so it is set.
void Wakeup::Set() {
    eventfd_write(descriptor, 1);
}

// An error means that the counter is empty.
void Wakeup::Clear() {
    eventfd_t count = 0;
    eventfd_read(descriptor, &count);
}

} // namespace Net
