// The library's own resources, as linked into this test program: the string
// table, the program-information file and the resource handle.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "core/resource_handle.h"
#include "tarn/core.h"

namespace {

std::string LoadText(UINT id) {
  char buffer[128] = {};
  ::LoadStringA(TarnGetResourceHandle(), id, buffer, sizeof buffer);
  return buffer;
}

TEST(Resources, StringTable) {
  EXPECT_EQ(LoadText(tarn::kStringNotAvailable), "Not Available");
  EXPECT_EQ(LoadText(tarn::kStringEmptyFileMapping),
            "Cannot create filemapping for files with size 0");
}

uint16_t Word(const unsigned char* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }

TEST(Resources, ProgramInformationFile) {
  HMODULE module = TarnGetResourceHandle();
  HRSRC info = ::FindResourceExA(module, tarn::kPifResourceType,
                                 MAKEINTRESOURCEA(tarn::kPifResourceId), MAKELANGID(9, 1));
  ASSERT_NE(info, nullptr);
  ASSERT_EQ(::SizeofResource(module, info), 967u);
  const auto* pif = static_cast<const unsigned char*>(::LockResource(::LoadResource(module, info)));
  ASSERT_NE(pif, nullptr);

  // Basic section: title padded with blanks to 30, 640 KB, the program.
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(pif + 2), 30),
            "MS-DOS Prompt                 ");
  EXPECT_EQ(Word(pif + 0x20), 640);
  EXPECT_STREQ(reinterpret_cast<const char*>(pif + 0x24), "C:\\WINDOWS\\COMMAND.COM");
  unsigned sum = 0;
  for (int i = 2; i < 369; ++i) sum += pif[i];
  EXPECT_EQ(pif[1], sum & 0xFF) << "checksum of the basic section";

  // The chain of extension headings: name, next heading, data offset, length.
  struct Heading {
    const char* name;
    uint16_t at, next, data, length;
  };
  const Heading chain[] = {{"MICROSOFT PIFEX", 369, 391, 0, 369},
                           {"WINDOWS 386 3.0", 391, 517, 413, 104},
                           {"WINDOWS VMM 4.0", 517, 0xFFFF, 539, 428}};
  for (const Heading& h : chain) {
    EXPECT_STREQ(reinterpret_cast<const char*>(pif + h.at), h.name);
    EXPECT_EQ(Word(pif + h.at + 16), h.next) << h.name;
    EXPECT_EQ(Word(pif + h.at + 18), h.data) << h.name;
    EXPECT_EQ(Word(pif + h.at + 20), h.length) << h.name;
  }
  const std::string vmm(reinterpret_cast<const char*>(pif + 539), 428);
  EXPECT_NE(vmm.find("PIFMGR.DLL"), std::string::npos);
  EXPECT_NE(vmm.find("Terminal"), std::string::npos);
  EXPECT_NE(vmm.find("Courier New"), std::string::npos);
}

TEST(ResourceHandle, StoresAnyValueNullIncluded) {
  HINSTANCE saved = TarnGetResourceHandle();
  TarnSetResourceHandle(nullptr);
  EXPECT_EQ(TarnGetResourceHandle(), nullptr);
  TarnSetResourceHandle(reinterpret_cast<HINSTANCE>(0x1234));
  EXPECT_EQ(TarnGetResourceHandle(), reinterpret_cast<HINSTANCE>(0x1234));
  TarnSetResourceHandle(saved);
}

}  // namespace
