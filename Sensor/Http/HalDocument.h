#pragma once

#include "VorApi/VorDataTree.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Sensor::Http {

/// A document with its relations to others, as hypertext (draft-kelly-json-hal-11).
struct HalDocument {
    struct Link {
        std::string relation;
        std::string href;
        bool asArray = false;
        VorApi::VorDataTree properties = {}; ///< an object, or null
    };
    struct Embedded {
        Link link;
        std::shared_ptr<const HalDocument> document = nullptr; ///< null for one that isn't expanded
    };

    std::string path;
    VorApi::VorDataTree members; ///< null or of another kind than an object for none
    std::vector<Link> links = {};
    std::vector<Embedded> embedded = {};

    bool HasLink(const std::string& relation) const;
    /// JSON with "_links", of which "self" is the first, the members and "_embedded". A relation that is there several
    /// times is an array. A text of at most `expectedSize` bytes doesn't move in memory, where it would occupy up to
    /// three times its size meanwhile.
    std::string Text(std::size_t expectedSize = 0) const;
    void AppendTo(std::string& out) const;
};

} // namespace Sensor::Http
