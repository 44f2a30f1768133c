#include "Vor/DocumentErrors.h"

#include "Tests/Support/Failure.h"
#include "Vor/DocumentValidation.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::DocumentErrors;
using Vor::Properties::JsonSerializer;
using Vor::Properties::ValidateDocument;

namespace {

struct Counted : Vor::Params::Group {
    Counted() {
        Register("count", count);
        count.EnableMaximum(true);
        count.SetMaximum(9);
    }
    Vor::Params::Value<unsigned short> count;
};

struct Checked : Vor::Params::Group {
    Checked() {
        Register("a/b~c", odd);
        Register("items", items);
        Register("inner", inner);
        Register("flag", flag);
    }
    Vor::Params::Value<bool> odd;
    Vor::Params::Array<Counted> items;
    Counted inner;
    Vor::Params::Value<bool> flag;
};

std::vector<Vor::DocumentError> ErrorsOf(const json& source) {
    const Checked document;
    DocumentErrors errors;
    ValidateDocument(document, source, errors, "");
    try {
        errors.ThrowIfAny();
    } catch (const Vor::DocumentException& e) {
        return e.Errors();
    }
    return {};
}

TEST(DocumentErrorsTest, AllThatIsRefusedIsCollectedWithItsPlace) {
    const auto errors = ErrorsOf(json::parse(
        R"({"a/b~c": 1, "items": [{"count": 1}, {"count": 10}, 7], "inner": {"count": "x"}, "flag": true})"));
    ASSERT_EQ(errors.size(), 4U);
    EXPECT_EQ(errors[0].pointer, "/a~1b~0c");
    EXPECT_EQ(errors[0].text, "a/b~c: expected a boolean but got the integer 1.");
    EXPECT_EQ(errors[1].pointer, "/items/1/count");
    EXPECT_EQ(errors[1].text, "count is set to be greater than its maximum.");
    EXPECT_EQ(errors[2].pointer, "/items/2");
    EXPECT_EQ(errors[3].pointer, "/inner/count");
    for (const auto& error : errors) {
        EXPECT_EQ(error.status, yERROR_PARAMETER);
    }
}

TEST(DocumentErrorsTest, StatusAndTextAreThoseOfTheFirstError) {
    const Checked document;
    DocumentErrors errors;
    ValidateDocument(document, json::parse(R"({"items": [{"count": 10}], "flag": 1})"), errors, "");
    EXPECT_FAILURE(errors.ThrowIfAny(), yERROR_PARAMETER, "count is set to be greater than its maximum.");
}

TEST(DocumentErrorsTest, TheWholeDocumentIsThePlaceOfWhatIsNoObject) {
    const auto errors = ErrorsOf(json::array());
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].pointer, "");
}

TEST(DocumentErrorsTest, AtMostAHundredAreCollected) {
    json items = json::array();
    for (int i = 0; i < 150; ++i) {
        items.push_back({{"count", 10}});
    }
    const auto errors = ErrorsOf({{"items", items}});
    ASSERT_EQ(errors.size(), DocumentErrors::MaxErrors);
    EXPECT_EQ(errors.back().pointer, "/items/99/count");
}

TEST(DocumentErrorsTest, PartsOfADocumentAreCollectedTogether) {
    const Checked document;
    DocumentErrors errors;
    ValidateDocument(document, {{"flag", 1}}, errors, "/first");
    ValidateDocument(document, {{"flag", true}}, errors, "/second");
    ValidateDocument(document, {{"inner", 1}}, errors, "/third");
    try {
        errors.ThrowIfAny();
        FAIL() << "nothing was thrown";
    } catch (const Vor::DocumentException& e) {
        ASSERT_EQ(e.Errors().size(), 2U);
        EXPECT_EQ(e.Errors()[0].pointer, "/first/flag");
        EXPECT_EQ(e.Errors()[1].pointer, "/third/inner");
    }
}

/// The places that a call refuses.
template <class Call>
std::vector<std::string> PlacesOf(const Call& call) {
    std::vector<std::string> places;
    try {
        call();
    } catch (const Vor::DocumentException& e) {
        for (const Vor::DocumentError& error : e.Errors()) {
            places.push_back(error.pointer);
        }
    }
    return places;
}

TEST(DocumentErrorsTest, ARefusedDocumentIsThrownWithAllItsPlacesAndNothingIsAssigned) {
    Checked document;
    const json source = json::parse(R"({"a/b~c": true, "items": [{"count": "x"}], "inner": {"count": 10}, "flag": 1})");
    EXPECT_EQ(PlacesOf([&] { JsonSerializer::Validate(document, source); }),
              (std::vector<std::string>{"/items/0/count", "/inner/count", "/flag"}));
    EXPECT_EQ(PlacesOf([&] { JsonSerializer::Deserialize(document, source); }),
              (std::vector<std::string>{"/items/0/count", "/flag"}));
    EXPECT_EQ(PlacesOf([&] { Vor::Properties::DeserializeDocument(document, source, "/part"); }),
              (std::vector<std::string>{"/part/items/0/count", "/part/flag"}));
    EXPECT_FALSE(document.odd.Get());
    EXPECT_EQ(document.items.Count(), 0U);
}

TEST(DocumentErrorsTest, WithoutErrorsNothingIsThrown) {
    DocumentErrors errors;
    errors.ThrowIfAny();
    EXPECT_FALSE(errors.IsFull());
}

} // namespace
