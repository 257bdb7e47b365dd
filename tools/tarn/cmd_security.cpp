// tarn acl show|grant|deny|revoke PATH|KEY [RID MASK]: the DACL of a file,
// directory or registry key, one entry a line, or one entry for a built-in
// group merged into it (TarnSetFileSecurityInfo,
// TarnSetRegistryKeyGroupSecurityInfo).
// tarn access PATH [read|write]: TarnChkDesiredAccess's verdict by name.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include "commands.h"
#include "tarn/security.h"

namespace tarn_tool {
namespace {

// Registry keys in the platform's form for named objects.
bool IsKeyName(const std::string& name) {
  for (const char* root : {"CLASSES_ROOT\\", "CURRENT_USER\\", "MACHINE\\", "USERS\\"})
    if (_strnicmp(name.c_str(), root, strlen(root)) == 0) return true;
  return false;
}

std::string Hex(unsigned long value) {
  char text[16];
  snprintf(text, sizeof text, "0x%08lx", value);
  return text;
}

// "DOMAIN\NAME" of a SID, or null when the system knows no name for it.
Json AccountName(PSID sid) {
  char name[256], domain[256];
  DWORD nameSize = sizeof name, domainSize = sizeof domain;
  SID_NAME_USE use;
  if (!::LookupAccountSidA(nullptr, sid, name, &nameSize, domain, &domainSize, &use)) return nullptr;
  return *domain ? std::string(domain) + "\\" + name : std::string(name);
}

struct AclArguments {
  std::string action, object;
  unsigned long rid = 0, mask = 0, inheritance = 0;
  bool json = false;
};

int Show(const AclArguments& args, SE_OBJECT_TYPE type) {
  PACL dacl = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  const DWORD code = ::GetNamedSecurityInfoA(args.object.c_str(), type, DACL_SECURITY_INFORMATION,
                                             nullptr, nullptr, &dacl, nullptr, &descriptor);
  if (code != ERROR_SUCCESS) return Fail(args.object, SystemText(code));
  Json records = Json::array();
  void* ace = nullptr;
  for (DWORD i = 0; dacl && ::GetAce(dacl, i, &ace); ++i) {
    // Allowed and denied entries share one layout.
    const auto* entry = static_cast<const ACCESS_ALLOWED_ACE*>(ace);
    PSID sid = const_cast<DWORD*>(&entry->SidStart);
    char* sidText = nullptr;
    ::ConvertSidToStringSidA(sid, &sidText);
    const BYTE kind = entry->Header.AceType;
    records.push_back({{"sid", sidText ? sidText : "?"},
                       {"name", AccountName(sid)},
                       {"type", kind == ACCESS_ALLOWED_ACE_TYPE  ? "allow"
                                : kind == ACCESS_DENIED_ACE_TYPE ? "deny"
                                                                 : std::to_string(kind)},
                       {"mask", Hex(entry->Mask)},
                       {"inheritance", Hex(entry->Header.AceFlags)}});
    ::LocalFree(sidText);
  }
  ::LocalFree(descriptor);
  PrintRecords(records, args.json, Layout::kRow);
  return 0;
}

int RunAcl(const AclArguments& args, const CLI::App& command) {
  const bool key = IsKeyName(args.object);
  const bool entry = command.count("rid") != 0;
  if (args.action == "show") {
    if (entry) throw CLI::ValidationError("show", "takes no RID or MASK");
    return Show(args, key ? SE_REGISTRY_KEY : SE_FILE_OBJECT);
  }
  if (!entry || !command.count("mask")) throw CLI::RequiredError("RID and MASK (with " + args.action + ")");
  const ACCESS_MODE mode = args.action == "grant" ? GRANT_ACCESS
                           : args.action == "deny" ? DENY_ACCESS
                                                   : REVOKE_ACCESS;
  const auto set = key ? TarnSetRegistryKeyGroupSecurityInfo : TarnSetFileSecurityInfo;
  if (!set(args.object.c_str(), args.rid, args.mask, mode, args.inheritance))
    return Fail(args.object, "the entry could not be merged into the list");
  return 0;
}

struct AccessArguments {
  std::string path, access = "read";
  bool json = false;
};

const char* const kVerdicts[] = {"granted", "denied", "in use", "unavailable", "error"};

}  // namespace

Runner DeclareAcl(CLI::App& command) {
  auto args = std::make_shared<AclArguments>();
  command.add_option("action", args->action, "show, grant, deny or revoke")
      ->required()
      ->check(CLI::IsMember({"show", "grant", "deny", "revoke"}));
  command.add_option("object", args->object,
                     "a file or directory, or a key such as CURRENT_USER\\Software\\Example")
      ->required();
  command.add_option("rid", args->rid, "the built-in group S-1-5-32-RID (0x221 Users, ...)")
      ->check(CLI::Range(0ul, 0xFFFFFFFFul));
  command.add_option("mask", args->mask, "the access mask (0x80000000 GENERIC_READ, ...)")
      ->check(CLI::Range(0ul, 0xFFFFFFFFul));
  command.add_option("--inheritance", args->inheritance, "the entry's inheritance flags")
      ->check(CLI::Range(0ul, 0xFFul))
      ->capture_default_str();
  AddJsonFlag(command, args->json);
  command.footer("show: every entry's trustee SID and name, allow or deny, mask and inheritance\n"
                 "flags. grant, deny, revoke: one entry for the group merged into the list.");
  CLI::App* self = &command;
  return [args, self] { return RunAcl(*args, *self); };
}

Runner DeclareAccess(CLI::App& command) {
  auto args = std::make_shared<AccessArguments>();
  command.add_option("path", args->path, "a file")->required();
  command.add_option("access", args->access, "read or write")
      ->check(CLI::IsMember({"read", "write"}))
      ->capture_default_str();
  AddJsonFlag(command, args->json);
  command.footer("Prints granted, denied, in use, unavailable or error: what opening the file\n"
                 "for exclusive use with that access meets.");
  return [args] {
    const TARN_CHKDESIREDACCESS verdict = TarnChkDesiredAccess(
        args->path.c_str(), args->access == "write" ? GENERIC_WRITE : GENERIC_READ);
    PrintRecords(Json::array({{{"path", args->path}, {"verdict", kVerdicts[verdict]}}}),
                 args->json, Layout::kRow);
    return 0;
  };
}

}  // namespace tarn_tool
