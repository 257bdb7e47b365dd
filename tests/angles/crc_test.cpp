// CRC-32: the public functions, the choice of path, and every path this
// machine can run against the byte table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "angles/crc32.h"
#include "tarn/angles.h"

namespace {

using tarn::crc32::Path;

std::vector<unsigned char> RandomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<unsigned char> bytes(size);
  for (auto& b : bytes) b = static_cast<unsigned char>(random());
  return bytes;
}

// The public functions run once per path (TARN_CRC32_PATH, see CMakeLists).
TEST(CrcPublic, CheckValuesAndChaining) {
  EXPECT_EQ(tarn::crc32::kTables.row[0][1], 0x77073096u);
  EXPECT_EQ(TarnCrcMemory("123456789", 9, 0), 0xCBF43926u);
  EXPECT_EQ(TarnCrcMemory("abc", 3, 0), 0x352441C2u);
  EXPECT_EQ(TarnCrcString("123456789", 0), 0xCBF43926u);
  // 1 MiB of zeros and of 0xFF (values of zlib's crc32).
  const std::vector<unsigned char> zeros(1 << 20, 0), ones(1 << 20, 0xFF);
  EXPECT_EQ(TarnCrcMemory(zeros.data(), 1 << 20, 0), 0xA738EA1Cu);
  EXPECT_EQ(TarnCrcMemory(ones.data(), 1 << 20, 0), 0x956BAC74u);

  EXPECT_EQ(TarnCrcMemory("6789", 4, TarnCrcMemory("12345", 5, 0)), 0xCBF43926u);
  EXPECT_EQ(TarnCrcString("6789", TarnCrcString("12345", 0)), 0xCBF43926u);
  // Random splits, small pieces and pieces that reach every vector loop.
  const std::vector<unsigned char> data = RandomBytes(3 << 20, 1);
  const std::uint32_t whole = ~tarn::crc32::UpdateByTable(~0u, data.data(), data.size());
  std::mt19937 random(2);
  for (int round = 0; round < 4; ++round) {
    std::uint32_t crc = 0;
    for (std::size_t at = 0; at < data.size();) {
      const std::size_t limit = random() % 4 == 0 ? 300000 : 700;
      const std::size_t piece = std::min<std::size_t>(random() % limit, data.size() - at);
      crc = TarnCrcMemory(data.data() + at, static_cast<int>(piece), crc);
      at += piece;
    }
    EXPECT_EQ(crc, whole) << "round " << round;
  }
}

TEST(CrcPublic, EmptyAndText) {
  EXPECT_EQ(TarnCrcMemory("abc", 0, 0xDEADBEEFu), 0xDEADBEEFu);
  EXPECT_EQ(TarnCrcMemory("abc", -1, 0xDEADBEEFu), 0xDEADBEEFu);
  EXPECT_EQ(TarnCrcMemory(nullptr, -2147483647 - 1, 7u), 7u);
  EXPECT_EQ(TarnCrcString("", 7u), 7u);
  EXPECT_EQ(TarnCrcString(nullptr, 7u), 7u);
  // Bytes are unsigned and end at the terminator.
  const unsigned char bytes[] = "\xE4\xF6\xFC\x80\xFF tail";
  EXPECT_EQ(TarnCrcString(reinterpret_cast<const char*>(bytes), 0),
            ~tarn::crc32::UpdateByTable(~0u, bytes, 10));
  EXPECT_EQ(TarnCrcString("ab\0cd", 0), TarnCrcMemory("ab", 2, 0));
}

TEST(CrcDispatch, SettingCapsThePath) {
  using tarn::crc32::PathFromSetting;
  EXPECT_EQ(PathFromSetting(nullptr, Path::kVpclmul), Path::kVpclmul);
  EXPECT_EQ(PathFromSetting("table", Path::kVpclmul), Path::kTable);
  EXPECT_EQ(PathFromSetting("pclmul", Path::kVpclmul), Path::kPclmul);
  // Never a path faster than the machine's best; unknown values are ignored.
  EXPECT_EQ(PathFromSetting("vpclmul", Path::kPclmul), Path::kPclmul);
  EXPECT_EQ(PathFromSetting("PCLMUL", Path::kSlice8), Path::kSlice8);

  const Path best = tarn::crc32::BestPath();
  const char* setting = std::getenv("TARN_CRC32_PATH");
  EXPECT_EQ(tarn::crc32::ActivePath(), PathFromSetting(setting, best))
      << "TARN_CRC32_PATH=" << (setting ? setting : "(not set)");
  std::printf("CRC-32 path: %s (best %s)\n", PathName(tarn::crc32::ActivePath()), PathName(best));
}

// Each path against the byte table.
class CrcPath : public ::testing::TestWithParam<Path> {
 protected:
  void SetUp() override {
    if (GetParam() > tarn::crc32::BestPath())
      GTEST_SKIP() << PathName(GetParam()) << " not supported by this processor";
    update_ = tarn::crc32::UpdateFor(GetParam());
    ASSERT_NE(update_, nullptr);
  }
  tarn::crc32::UpdateFn update_ = nullptr;
};

TEST_P(CrcPath, EveryLengthUpTo4096AtEveryAlignment) {
  constexpr std::size_t kMax = 4096;
  const std::vector<unsigned char> data = RandomBytes(kMax, 3);
  // The reference register of every prefix, with a start that is not 0.
  std::vector<std::uint32_t> prefix(kMax + 1);
  prefix[0] = 0x12345678u;
  for (std::size_t n = 0; n < kMax; ++n)
    prefix[n + 1] = tarn::crc32::UpdateByTable(prefix[n], &data[n], 1);

  // 64-byte aligned storage with room for 16 offsets, and guard bytes that
  // must not count.
  std::vector<unsigned char> storage(kMax + 64 + 32, 0xA5);
  unsigned char* aligned =
      storage.data() + (64 - reinterpret_cast<std::uintptr_t>(storage.data()) % 64);
  for (std::size_t offset = 0; offset < 16; ++offset) {
    unsigned char* at = aligned + offset;
    std::memcpy(at, data.data(), kMax);
    for (std::size_t n = 0; n <= kMax; ++n)
      ASSERT_EQ(update_(prefix[0], at, n), prefix[n]) << "length " << n << " offset " << offset;
    std::memset(at, 0xA5, kMax);
  }
}

TEST_P(CrcPath, RandomLengthsUpTo16MiB) {
  constexpr std::size_t kMax = 16u << 20;
  const std::vector<unsigned char> data = RandomBytes(kMax, 4);
  std::mt19937 random(5);
  std::vector<std::size_t> lengths{kMax, kMax - 1, (1u << 20) + 255};
  while (lengths.size() < 16) lengths.push_back(random() % (kMax + 1));
  std::sort(lengths.begin(), lengths.end());

  // One pass of the byte table gives the reference of every length.
  std::uint32_t reg = ~0u;
  std::size_t done = 0;
  for (std::size_t length : lengths) {
    reg = tarn::crc32::UpdateByTable(reg, data.data() + done, length - done);
    done = length;
    ASSERT_EQ(update_(~0u, data.data(), length), reg) << "length " << length;
  }
}

INSTANTIATE_TEST_SUITE_P(AllPaths, CrcPath,
                         ::testing::Values(Path::kSlice8, Path::kPclmul, Path::kVpclmul),
                         [](const ::testing::TestParamInfo<Path>& info) {
                           return std::string(PathName(info.param));
                         });

}  // namespace
