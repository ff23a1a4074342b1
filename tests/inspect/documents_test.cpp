// What the README shows of the inspector is what the inspector shows.
#include "corpus.h"

#include <map.h>
#include <message.h>
#include <tree.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string Content(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

inspect::Message Corpus(const std::string& name)
{
    return inspect::Inspect(corpus::CaptureOf(ReadMessage("../messages/" + name + ".msg")));
}

TEST(InspectDocuments, TheFaultyMessageOfTheReadme)
{
    EXPECT_THAT(Content("../../README.md"),
                testing::HasSubstr("```\n" + Tree(Corpus("ProxySettings/address_outside"), {}) + "```\n"));
}

TEST(InspectDocuments, ThePictureOfTheReadme)
{
    EXPECT_EQ(Content("../../docs/inspector.svg"), Map(Corpus("ServerConnectionParameters/full"), false));
}

} // namespace
