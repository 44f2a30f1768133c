#include "Sensor/Http/ResourceMap.h"

#include "Tests/Support/Failure.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

using Sensor::Http::ResourceMap;

namespace {

TEST(ResourceMapTest, APathHasOneCanonicalForm) {
    const std::pair<const char*, const char*> paths[] = {
        {"/", "/"},         {"/a", "/a"},   {"/a/", "/a"},  {"/a/b/", "/a/b"}, {"//", "//"},      {"/a//", "/a//"},
        {"/a//b", "/a//b"}, {"///", "///"}, {"/%61", "/a"}, {"/%2f", "/%2F"},  {"/%2F/", "/%2F"}, {"/a%20b", "/a%20b"},
    };
    for (const auto& [path, canonical] : paths) {
        EXPECT_EQ(ResourceMap::Canonical(path), canonical) << path;
        EXPECT_EQ(ResourceMap::Canonical(canonical), canonical) << path;
    }
    EXPECT_EQ(Tests::StatusOf([] { ResourceMap::Canonical("/%4"); }), yERROR_FORMAT);
}

} // namespace
