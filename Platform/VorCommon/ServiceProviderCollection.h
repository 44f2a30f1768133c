#pragma once

namespace VorCommon {

/// A collection of service providers. This platform has none, so each collection is empty.
class ServiceProviderCollection {};

} // namespace VorCommon
