#include "Vor/VorGetText.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace {

const char* const AtLoad = VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Text of a static object");

/// A compiled catalogue of one text, in the format that msgfmt writes: header, table of texts, table of translations.
void WriteCatalogue(const std::filesystem::path& file, const std::string& text, const std::string& translation) {
    std::filesystem::create_directories(file.parent_path());
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n";
    const std::vector<std::string> originals{"", text};
    const std::vector<std::string> translations{header, translation};
    std::string strings;
    std::vector<std::uint32_t> table;
    const std::uint32_t stringsAt = 28 + 2 * 2 * 8;
    for (const auto* list : {&originals, &translations}) {
        for (const auto& one : *list) {
            table.push_back(static_cast<std::uint32_t>(one.size()));
            table.push_back(stringsAt + static_cast<std::uint32_t>(strings.size()));
            strings += one + '\0';
        }
    }
    const std::vector<std::uint32_t> head{0x950412de, 0, 2, 28, 28 + 16, 0, 28 + 32};
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(head.data()), 28);
    out.write(reinterpret_cast<const char*>(table.data()), 32);
    out << strings;
}

} // namespace

TEST(VorGetTextTest, WorksDuringStaticInitialisation) {
    EXPECT_STREQ(AtLoad, "Text of a static object");
}

TEST(VorGetTextTest, WithoutATranslationTheTextItselfIsGiven) {
    EXPECT_STREQ(VorGetText::GetInstance().DPGetText("BE", "beApp", "Some %1$s text"), "Some %1$s text");
    EXPECT_STREQ(VorGetText::GetInstance().DPGetText("BE", "beApp", ""), "");
    EXPECT_STREQ(VorGetText::GetInstance().DPGetText(nullptr, nullptr, nullptr), "");
}

TEST(VorGetTextTest, PointerOutlivesTheArgumentAndIsTheSameEachTime) {
    const char* first = nullptr;
    {
        const auto temporary = std::make_unique<std::string>("A text of a temporary");
        first = VorGetText::GetInstance().DPGetText("BE", "control", temporary->c_str());
        EXPECT_NE(first, temporary->c_str());
    }
    EXPECT_STREQ(first, "A text of a temporary");
    EXPECT_EQ(first, VorGetText::GetInstance().DPGetText("BE", "control", "A text of a temporary"));
}

TEST(VorGetTextTest, TableTranslatesItsOwnCatalogueOnlyUntilItIsRemoved) {
    VorGetText& texts = VorGetText::GetInstance();
    EXPECT_STREQ(texts.DPGetText("BE", "beApp.ctrl", "Protocol"), "Protocol");
    texts.SetTranslations("beApp.ctrl", {{"Protocol", "Protokoll"}});
    const char* translated = texts.DPGetText("BE", "beApp.ctrl", "Protocol");
    EXPECT_STREQ(translated, "Protokoll");
    EXPECT_STREQ(texts.DPGetText("BE", "beApp", "Protocol"), "Protocol");
    EXPECT_STREQ(texts.DPGetText("BE", "beApp.ctrl", "Other"), "Other");
    texts.SetTranslations("beApp.ctrl", {});
    EXPECT_STREQ(texts.DPGetText("BE", "beApp.ctrl", "Protocol"), "Protocol");
    EXPECT_STREQ(translated, "Protokoll");
}

TEST(VorGetTextTest, CallsAreRecordedWithTheirCatalogue) {
    VorGetText& texts = VorGetText::GetInstance();
    texts.ForgetCalls();
    texts.DPGetText("BE", "control", "recorded");
    texts.DPGetText("BE", "control", "recorded");
    texts.DPGetText("BE", "beApp", "recorded");
    const std::vector<VorGetText::Call> expected{{"BE", "beApp", "recorded"}, {"BE", "control", "recorded"}};
    EXPECT_EQ(texts.Calls(), expected);
    texts.ForgetCalls();
    texts.DPGetText("BE", "beApp", "recorded");
    EXPECT_EQ(texts.Calls(), (std::vector<VorGetText::Call>{{"BE", "beApp", "recorded"}}));
}

TEST(VorGetTextTest, FilesOfTheLocaleFolderTranslateByDomainAndCatalogue) {
    const auto folder = std::filesystem::temp_directory_path() / ("vor-locale-" + std::to_string(getpid()));
    WriteCatalogue(folder / "xx" / "LC_MESSAGES" / "BE.beApp.mo", "Hello", "Olleh");
    const std::string former = setlocale(LC_MESSAGES, nullptr);
    ASSERT_NE(setlocale(LC_MESSAGES, "C.UTF-8"), nullptr);
    setenv("LANGUAGE", "xx", 1);
    VorGetText& texts = VorGetText::GetInstance();
    texts.SetLocaleFolder(folder.string());
    EXPECT_STREQ(texts.DPGetText("BE", "beApp", "Hello"), "Olleh");
    EXPECT_STREQ(texts.DPGetText("BE", "control", "Hello"), "Hello");
    EXPECT_STREQ(texts.DPGetText("BE", "beApp", ""), "");
    texts.SetLocaleFolder("");
    EXPECT_STREQ(texts.DPGetText("BE", "beApp", "Hello"), "Hello");
    unsetenv("LANGUAGE");
    setlocale(LC_MESSAGES, former.c_str());
    std::filesystem::remove_all(folder);
}

TEST(VorGetTextTest, ThreadsGetTheSamePointer) {
    std::vector<const char*> got(4);
    std::vector<std::thread> threads;
    for (auto& slot : got) {
        threads.emplace_back([&slot] { slot = VorGetText::GetInstance().DPGetText("BE", "beApp", "of threads"); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(std::all_of(got.begin(), got.end(), [&](const char* text) { return text == got[0]; }));
}
