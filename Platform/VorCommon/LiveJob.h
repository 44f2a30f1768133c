#pragma once

#include "yApi/yObject.h"

#include <string>

/// The job that the sensor runs, as a shared object.
using LiveJob = void*;

extern const yType yType_LiveJob;

yStatus LiveJob_Construct(LiveJob* job, const std::string& fileName, yAllocator allocator = nullptr);

/// The file name with its extension, valid as long as the object. The handle must be that of a LiveJob.
const std::string& LiveJob_FileName(LiveJob job);
