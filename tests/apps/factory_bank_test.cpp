#include "presets/factory_bank.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "parameters/parameter_table.h"
#include "program_text/program_file.h"

namespace norava::test {
namespace {

// What is built in is what the texts say, and all of it.
TEST(FactoryBank, HoldsTheTexts) {
    const std::vector<BankEntry> texts = LoadBank(NORAVA_PROGRAMS);
    const auto bank = GetFactoryBank();
    ASSERT_EQ(bank.size(), texts.size());
    for (std::size_t i = 0; i < bank.size(); ++i) {
        EXPECT_EQ(bank[i].category, texts[i].category);
        EXPECT_EQ(bank[i].name, texts[i].program.name);
        const StateBlock block = ToBlock(texts[i].program);
        EXPECT_TRUE(std::ranges::equal(bank[i].block, block, {}, {}, [](char c) {
            return static_cast<unsigned char>(c);
        })) << bank[i].name;
    }
}

TEST(FactoryBank, IsFitForALibrary) {
    std::set<std::string> categories, names;
    for (const BankEntry& entry : LoadBank(NORAVA_PROGRAMS)) {
        const Program& program = entry.program;
        categories.insert(entry.category);
        EXPECT_TRUE(names.insert(program.name).second) << program.name << " is there twice";
        EXPECT_FALSE(program.author.empty() || program.tags.empty() || program.description.empty())
            << program.name;
        // Names of files and folders on every system.
        EXPECT_EQ((entry.category + program.name).find_first_of("/\\:*?\"<>|."), std::string::npos);
        const auto plays = [&program](float source) {
            for (int i = param::kMatrix; i < param::kStringRatio; i += kMatrixSlotSize) {
                if (program.values[std::size_t(i)] == source) return true;
            }
            return false;
        };
        constexpr float kWheel = 3.0f, kVelocity = 6.0f;
        EXPECT_TRUE(plays(kWheel) && plays(kVelocity)) << program.name;
    }
    EXPECT_GE(categories.size(), 8u);
    EXPECT_GE(names.size(), 96u);
}

}  // namespace
}  // namespace norava::test
