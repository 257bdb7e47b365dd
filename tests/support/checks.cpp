#include "support/checks.h"

#include <gtest/gtest.h>
#include <string.h>

#ifdef _WIN32
#include <psapi.h>

#include "support/wine_env.h"
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tarn_test {
namespace {

constexpr unsigned char kCanary = 0xA5;
constexpr size_t kCanaryBytes = 16;
constexpr char kFill = '#';

// Pages whose last `size` usable bytes end where an inaccessible page begins.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(size_t size) {
    const size_t page = PageSize();
    span_ = ((size + kCanaryBytes + page - 1) / page + 1) * page;
#ifdef _WIN32
    base_ = static_cast<char*>(::VirtualAlloc(nullptr, span_, MEM_COMMIT | MEM_RESERVE,
                                              PAGE_READWRITE));
    DWORD old = 0;
    ::VirtualProtect(base_ + span_ - page, page, PAGE_NOACCESS, &old);
#else
    base_ = static_cast<char*>(
        mmap(nullptr, span_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + span_ - page, page, PROT_NONE);
#endif
    data_ = base_ + span_ - page - size;
    memset(base_, kCanary, span_ - page);
    memset(data_, kFill, size);
  }
  ~GuardedBuffer() {
#ifdef _WIN32
    ::VirtualFree(base_, 0, MEM_RELEASE);
#else
    munmap(base_, span_);
#endif
  }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  char* data() const { return data_; }
  bool CanaryIntact() const {
    for (const char* p = data_ - kCanaryBytes; p < data_; ++p)
      if (static_cast<unsigned char>(*p) != kCanary) return false;
    return true;
  }

 private:
  static size_t PageSize() {
#ifdef _WIN32
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return info.dwPageSize;
#else
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
#endif
  }
  char* base_ = nullptr;
  char* data_ = nullptr;
  size_t span_ = 0;
};

void CheckAtSize(const TextRow& row, size_t size) {
  SCOPED_TRACE(row.what + " at size " + std::to_string(size));
  GuardedBuffer buffer(size);
  const long long result = row.call(buffer.data(), static_cast<DWORD>(size));
  EXPECT_TRUE(buffer.CanaryIntact()) << "written before the buffer's start";
  const size_t limit = row.limit == std::string::npos ? row.text.size() : row.limit;
  const std::string written(buffer.data(), size);
  if (size == 0) {
    EXPECT_EQ(result, 0);
    return;
  }
  std::string expected;  // the text and its terminator as they must stand
  if (size > limit) {
    EXPECT_EQ(result, row.fits);
    expected = row.text + '\0';
  } else {
    EXPECT_EQ(result, row.cut);
    if (row.rule == Short::kUntouched) {
      EXPECT_EQ(written, std::string(size, kFill)) << "a short buffer is not written";
      return;
    }
    expected = row.rule == Short::kCut ? row.text.substr(0, size - 1) + '\0' : std::string(1, '\0');
  }
  const size_t compare = std::min(row.compare, expected.size() - 1);
  EXPECT_EQ(written.substr(0, compare), expected.substr(0, compare));
  const size_t end = written.find('\0');
  EXPECT_EQ(end, expected.size() - 1) << "terminator position";
  if (row.zeroFills && end != std::string::npos)
    EXPECT_EQ(written.substr(end), std::string(size - end, '\0')) << "the rest is zero-filled";
}

}  // namespace

void CheckTextRows(const std::vector<TextRow>& rows) {
  for (const TextRow& row : rows) {
    const size_t limit = row.limit == std::string::npos ? row.text.size() : row.limit;
    for (size_t size : {size_t{0}, size_t{1}, limit, limit + 1}) CheckAtSize(row, size);
  }
}

#ifdef _WIN32
std::string SystemText(DWORD code) {
  if (code == 0) return std::string();
  char text[1024] = {};
  ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0x400, text, sizeof text, nullptr);
  return text;
}

void CheckErrorRows(const std::vector<ErrorRow>& rows) {
  for (const ErrorRow& row : rows) {
    SCOPED_TRACE(row.what);
    DWORD code = 0xDEADBEEF;
    char text[1024] = "junk from an earlier call";
    EXPECT_EQ(row.call(&code, text, sizeof text), row.result);
    EXPECT_EQ(code, row.code);
    const DWORD message = row.message < 0 ? row.code : static_cast<DWORD>(row.message);
    EXPECT_EQ(std::string(text), SystemText(message));
    if (message) EXPECT_NE(text[0], '\0') << "the system has a text for " << message;

    char untouched[] = "untouched";
    code = 0xDEADBEEF;
    EXPECT_EQ(row.call(&code, untouched, 0), row.result);
    EXPECT_EQ(code, row.code);
    EXPECT_STREQ(untouched, "untouched") << "a buffer of size 0 is not written";

    char one[] = "xy";
    row.call(&code, one, 1);
    EXPECT_EQ(one[0], '\0') << "a buffer of size 1 holds the terminator only";
    EXPECT_EQ(one[1], 'y') << "written past a buffer of size 1";

    EXPECT_EQ(row.call(nullptr, nullptr, 0), row.result);
  }
}

namespace {
// The process's commit charge: its private bytes. (Wine answers 0 for
// PrivateUsage but keeps PagefileUsage, which Windows defines as the same.)
SIZE_T PrivateBytes() {
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof counters;
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
  return counters.PagefileUsage;
}
}  // namespace

void ExpectBalanced(const char* what, const std::function<void()>& body, int times) {
  constexpr SIZE_T kSlack = 256 * 1024;
  body();
  const DWORD handles = HandleCount();
  const SIZE_T bytes = PrivateBytes();
  for (int i = 0; i < times; ++i) body();
  EXPECT_EQ(HandleCount(), handles) << what << ": handles left open";
  const SIZE_T after = PrivateBytes();
  EXPECT_LE(after, bytes + kSlack) << what << ": private memory grew by " << (after - bytes);
}
#endif

}  // namespace tarn_test
