#include "VorControl/Providers/UserNotes.h"

#include <algorithm>

namespace VorControl::Providers {

// A call on another thread may end after the removal, so it uses nothing of this object.
UserNotes::UserNotes()
    : handler(Vor::Logging::AddUserHandler([this, own = thread](const Vor::LogRecord& record) {
        if (std::this_thread::get_id() == own) {
            Add(record.text);
        }
    })) {}

UserNotes::~UserNotes() {
    Vor::Logging::RemoveUserHandler(handler);
}

void UserNotes::Add(const std::string& text) {
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) {
        texts.push_back(text);
    }
}

} // namespace VorControl::Providers
