#include "platform/log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace obolo {
namespace {

TEST(LogTest, CredentialLinesCanBeDroppedWhileDiagnosticsPassThrough) {
  std::vector<std::string> kept;
  SetLogSink(WithoutCredentials([&](std::string_view line, LogContent) { kept.emplace_back(line); }));
  LogLine("createLoggedOutBid started");
  LogLine("Access Token: secret", LogContent::kCredential);
  SetLogSink(nullptr);
  EXPECT_EQ(kept, std::vector<std::string>{"createLoggedOutBid started"});
}

TEST(LogTest, DefaultSinkWritesTheExactLineToStandardOutput) {
  ::testing::internal::CaptureStdout();
  LogLine("tapped");
  LogLine("");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "tapped\n\n");
}

}  // namespace
}  // namespace obolo
