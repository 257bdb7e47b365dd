// CRC-32 through the public functions, on the path in use: CMake runs these
// tests once as they come (the fastest path this machine has) and once with
// each slower path forced, so every path meets the byte table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "angles/crc32.h"
#include "tarn/angles.h"

namespace {

using tarn::crc32::Path, tarn::crc32::UpdateByTable;

TEST(CrcPublic, CheckValueAndNothingToAdd) {
  EXPECT_EQ(TarnCrcMemory("123456789", 9, 0), 0xCBF43926u);
  EXPECT_EQ(TarnCrcString("6789", TarnCrcString("12345", 0)), 0xCBF43926u);
  // A text's bytes are unsigned and end at its terminator.
  const unsigned char text[] = "\xE4\xF6\xFC\x80\xFF\0tail";
  EXPECT_EQ(TarnCrcString(reinterpret_cast<const char*>(text), 0), ~UpdateByTable(~0u, text, 5));
  EXPECT_EQ(TarnCrcMemory("abc", 0, 0xDEADBEEFu), 0xDEADBEEFu);
  EXPECT_EQ(TarnCrcMemory(nullptr, -1, 7u), 7u);
  EXPECT_EQ(TarnCrcString("", 7u), 7u);
  EXPECT_EQ(TarnCrcString(nullptr, 7u), 7u);
}

// From a checksum that is not 0: every length up to 1100 (every count of the
// 256-, 64- and 16-byte loops and of the bytes after them) at 16 alignments,
// and 1 MiB and 255 bytes.
TEST(CrcPublic, AgreesWithTheByteTable) {
  std::vector<unsigned char> data((1 << 20) + 255);
  std::generate(data.begin(), data.end(), std::mt19937(2));
  std::vector<std::uint32_t> prefix{~0x12345678u};  // the register after each prefix
  for (unsigned char byte : data) prefix.push_back(UpdateByTable(prefix.back(), &byte, 1));
  EXPECT_EQ(TarnCrcMemory(data.data(), static_cast<int>(data.size()), 0x12345678u), ~prefix.back());
  for (std::size_t offset = 0; offset < 16; ++offset)
    for (int n = 0; n <= 1100; ++n)
      ASSERT_EQ(TarnCrcMemory(&data[offset], n, ~prefix[offset]), ~prefix[offset + n])
          << n << " bytes at " << offset << " on " << PathName(tarn::crc32::ActivePath());
}

TEST(CrcDispatch, SettingCapsThePath) {
  using tarn::crc32::PathFromSetting;
  EXPECT_EQ(PathFromSetting("table", Path::kVpclmul), Path::kTable);
  // Never a path faster than the machine's best; unknown values are ignored.
  EXPECT_EQ(PathFromSetting("vpclmul", Path::kPclmul), Path::kPclmul);
  EXPECT_EQ(PathFromSetting("PCLMUL", Path::kSlice8), Path::kSlice8);
  const char* setting = std::getenv("TARN_CRC32_PATH");
  EXPECT_EQ(tarn::crc32::ActivePath(), PathFromSetting(setting, tarn::crc32::BestPath()))
      << "TARN_CRC32_PATH=" << (setting ? setting : "(not set)");
}

}  // namespace
