#pragma once

#include <filesystem>
#include <string>

/// The job with which the sensor starts unless the user names one. Its name is in the workspace, so that a factory
/// restore forgets it. Calls block until the disk has answered.
namespace Sensor::Jobs::DefaultJob {

/// Empty when there is none, or when it can't be read.
std::string Read(const std::filesystem::path& workspace);
/// Throws a Vor::Exception when the workspace can't be written.
void Write(const std::filesystem::path& workspace, const std::string& name);

} // namespace Sensor::Jobs::DefaultJob
