#include "Sensor/Resources/JobProperties.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Resources/DocumentMembers.h"
#include "VorApi/Path.h"

#include <cstddef>

namespace Sensor::Resources {

JobProperties::JobProperties(const SensorJobs::Job& job) {
    RegisterReadOnly(*this, "name", name, "Name");
    RegisterReadOnly(*this, "size", size, "Size");
    size.EnableUnits(true);
    size.SetUnits("B");
    RegisterReadOnly(*this, "modified", modified, "Time of the last change");
    RegisterReadOnly(*this, "loaded", loaded, "Whether it is loaded");
    RegisterReadOnly(*this, "default", isDefault, "Whether the sensor starts with it");
    RegisterReadOnly(*this, "services", services, "Services for which it has settings");
    RegisterReadOnly(*this, "failure", failure, "Why it can't be read");
    name = job.file.name;
    size = static_cast<unsigned long long>(job.file.size);
    modified = job.file.modified;
    loaded = job.isLoaded;
    isDefault = job.isDefault;
    services = job.file.services;
    failure = job.file.failure;
}

std::string JobProperties::PathOf(const std::string& name) {
    return VorApi::Path::Format("/sensor/jobs/:job", {name});
}

JobChangeProperties::JobChangeProperties() {
    RegisterReadOnly(*this, "service", service, "Service");
    RegisterReadOnly(*this, "entry", entry, "Entry of the archive");
    RegisterReadOnly(*this, "pointer", pointer, "Pointer to the member of the entry");
    RegisterReadOnly(*this, "before", before, "Value in the file, as JSON");
    RegisterReadOnly(*this, "after", after, "Present value, as JSON");
}

void JobChangeProperties::Populate(const Jobs::JobChanges::Change& change) {
    service = Jobs::JobFormat::ServiceOf(change.entry);
    entry = change.entry;
    pointer = change.pointer;
    before = change.before;
    after = change.after;
}

JobChangesProperties::JobChangesProperties(const Jobs::JobChanges& differing) {
    RegisterReadOnly(*this, "count", count, "Number of changes");
    RegisterReadOnly(*this, "changes", changes, "The first changes");
    count = static_cast<unsigned long long>(differing.count);
    changes.Resize(differing.listed.size());
    for (std::size_t i = 0; i < differing.listed.size(); ++i) {
        changes.At(i).Populate(differing.listed[i]);
    }
}

} // namespace Sensor::Resources
