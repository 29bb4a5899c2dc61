#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/log.h"

namespace obolo {
namespace {

struct Wanted {
  bool diagnostic;
  bool credential;
  bool operator==(const Wanted&) const = default;
};

Wanted WantedWith(LogSink sink) {
  SetLogSink(std::move(sink));
  const Wanted wanted{LogLineWanted(LogContent::kDiagnostic), LogLineWanted(LogContent::kCredential)};
  SetLogSink(nullptr);
  return wanted;
}

TEST(LogLineWantedTest, OnlySinksKnownToDropALineSayItIsUnwanted) {
  const auto keep = [](std::string_view, LogContent) {};
  EXPECT_EQ(WantedWith(nullptr), (Wanted{true, true})) << "the default sink writes everything";
  EXPECT_EQ(WantedWith(StandardOutputLogSink()), (Wanted{true, true}));
  EXPECT_EQ(WantedWith(keep), (Wanted{true, true})) << "a host's own sink may keep anything";
  EXPECT_EQ(WantedWith(NullLogSink()), (Wanted{false, false}));
  EXPECT_EQ(WantedWith(WithoutCredentials(keep)), (Wanted{true, false}));
  EXPECT_EQ(WantedWith(WithoutCredentials(NullLogSink())), (Wanted{false, false}));
  EXPECT_EQ(WantedWith(WithoutCredentials(nullptr)), (Wanted{false, false})) << "an empty next sink keeps nothing";
}

TEST(LogLineWantedTest, TheReadyMadeSinksStillBehaveAsBefore) {
  std::vector<std::string> kept;
  SetLogSink(WithoutCredentials([&](std::string_view line, LogContent) { kept.emplace_back(line); }));
  LogLine("diagnostic");
  LogLine("secret", LogContent::kCredential);
  SetLogSink(NullLogSink());
  LogLine("dropped");
  SetLogSink(nullptr);
  EXPECT_EQ(kept, std::vector<std::string>{"diagnostic"});
}

}  // namespace
}  // namespace obolo
