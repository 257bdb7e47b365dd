// tarn stg list|cat|add: the tree of a compound file, one stream's bytes, a
// file added as a stream. Element paths are names joined by "/".
#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "commands.h"
#include "tarn/storage.h"

namespace tarn_tool {
namespace {

struct Arguments {
  std::string file, path, source, out;
  bool json = false;
};

// The result code of the last failed operation, with its system text.
struct Outcome {
  HRESULT hr = 0;
  char text[512] = "";
  // The system text, or the code where the system has none.
  std::string Text() const {
    if (text[0]) return text;
    char code[32];
    snprintf(code, sizeof code, "error 0x%08lX", static_cast<unsigned long>(hr));
    return code;
  }
};

// Releases an interface when it goes.
template <typename Interface>
struct Held {
  Interface* p = nullptr;
  Held() = default;
  explicit Held(Interface* i) : p(i) {}
  Held(Held&& other) noexcept : p(other.p) { other.p = nullptr; }
  Held& operator=(Held&& other) noexcept {
    std::swap(p, other.p);
    return *this;
  }
  ~Held() {
    if (p) p->Release();
  }
};

std::vector<std::string> Names(const std::string& path) {
  std::vector<std::string> names;
  std::stringstream parts(path);
  for (std::string name; std::getline(parts, name, '/');)
    if (!name.empty()) names.push_back(name);
  return names;
}

std::string Narrow(const wchar_t* name) {
  char text[128] = "";
  ::WideCharToMultiByte(CP_ACP, 0, name, -1, text, sizeof text, nullptr, nullptr);
  return text;
}

const char* TypeName(DWORD type) {
  switch (type) {
    case STGTY_STORAGE: return "storage";
    case STGTY_STREAM: return "stream";
    case STGTY_LOCKBYTES: return "lockbytes";
    default: return "property";
  }
}

// Adds a record for every element below `storage`, storages before what they
// hold; fails on the first storage that cannot be opened or listed.
bool List(IStorage* storage, const std::string& prefix, Json& records, Outcome& out) {
  CTarnOleEnumElements elements;
  if (!elements.EnumElements(storage, &out.hr, out.text, sizeof out.text)) return false;
  for (int i = 0; i < static_cast<int>(elements.Size()); ++i) {
    const STATSTG& record = elements.GetAt(i);
    const std::string path = prefix + Narrow(record.pwcsName);
    char clsid[40] = "";
    TarnOleCLSIDAsString(record.clsid, clsid, sizeof clsid);
    records.push_back({{"path", path},
                       {"type", TypeName(record.type)},
                       {"size", record.cbSize.QuadPart},
                       {"clsid", record.type == STGTY_STORAGE ? Json(clsid) : Json()}});
    if (record.type != STGTY_STORAGE) continue;
    Held<IStorage> inner(TarnOleOpenStorage(0, storage, record.pwcsName, nullptr, &out.hr,
                                            out.text, sizeof out.text));
    if (!inner.p || !List(inner.p, path + "/", records, out)) return false;
  }
  return true;
}

int RunList(const Arguments& args) {
  Outcome out;
  Held<IStorage> root(
      TarnOleOpenStgFile(0, args.file.c_str(), &out.hr, out.text, sizeof out.text));
  Json records = Json::array();
  if (!root.p || !List(root.p, "", records, out)) return Fail(args.file, out.Text());
  PrintRecords(records, args.json, Layout::kRow);
  return 0;
}

// Opens the storages on the way to the last of `names` (creating the missing
// ones when `create`), each kept in `chain` after the root: a storage stays
// usable only while its parent is open. The storage that holds the last name,
// or null.
IStorage* Parent(std::vector<Held<IStorage>>& chain, const std::vector<std::string>& names,
                 bool create, Outcome& out) {
  for (size_t i = 0; i + 1 < names.size(); ++i) {
    IStorage* storage = chain.back().p;
    STATSTG found;
    const bool exists = !create || TarnOleFindElement(storage, names[i].c_str(), STGTY_STORAGE,
                                                      found, nullptr, nullptr, 0);
    if (create && exists) ::CoTaskMemFree(found.pwcsName);
    chain.emplace_back(exists ? TarnOleOpenStorage(create, storage, names[i].c_str(), nullptr,
                                                   &out.hr, out.text, sizeof out.text)
                              : TarnOleCreateStorage(storage, names[i].c_str(), nullptr, &out.hr,
                                                     out.text, sizeof out.text));
    if (!chain.back().p) return nullptr;
  }
  return chain.back().p;
}

int RunCat(const Arguments& args) {
  const std::vector<std::string> names = Names(args.path);
  if (names.empty()) throw CLI::ValidationError("path", "names no stream: " + args.path);
  Outcome out;
  std::vector<Held<IStorage>> chain;
  chain.emplace_back(TarnOleOpenStgFile(0, args.file.c_str(), &out.hr, out.text, sizeof out.text));
  if (!chain.back().p) return Fail(args.file, out.Text());
  IStorage* parent = Parent(chain, names, false, out);
  STATSTG stat;
  Held<IStream> stream(parent ? TarnOleOpenStream(0, parent, names.back().c_str(), &stat, &out.hr,
                                                  out.text, sizeof out.text)
                              : nullptr);
  if (!stream.p) return Fail(args.path, out.Text());
  ::CoTaskMemFree(stat.pwcsName);
  std::vector<char> bytes(static_cast<size_t>(stat.cbSize.QuadPart));
  if (!bytes.empty() && !TarnOleReadStream(stream.p, bytes.data(), static_cast<DWORD>(bytes.size()),
                                           &out.hr, out.text, sizeof out.text))
    return Fail(args.path, out.Text());
  if (args.out.empty()) {
    _setmode(_fileno(stdout), _O_BINARY);
    fwrite(bytes.data(), 1, bytes.size(), stdout);
    return 0;
  }
  std::ofstream file(args.out, std::ios::binary);
  if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
    return Fail(args.out, "cannot be written");
  return 0;
}

int RunAdd(const Arguments& args) {
  const std::vector<std::string> names = Names(args.path);
  if (names.empty()) throw CLI::ValidationError("path", "names no stream: " + args.path);
  std::ifstream source(args.source, std::ios::binary);
  if (!source) return Fail(args.source, "cannot be read");
  const std::vector<char> bytes{std::istreambuf_iterator<char>(source),
                                std::istreambuf_iterator<char>()};
  Outcome out;
  std::vector<Held<IStorage>> chain;
  chain.emplace_back(TarnOleOpenStgFile(1, args.file.c_str(), &out.hr, out.text, sizeof out.text));
  if (!chain.back().p && out.hr == STG_E_FILENOTFOUND)
    chain.back() = Held<IStorage>(
        TarnOleCreateStgFile(args.file.c_str(), &out.hr, out.text, sizeof out.text));
  if (!chain.back().p) return Fail(args.file, out.Text());
  IStorage* parent = Parent(chain, names, true, out);
  Held<IStream> stream(parent ? TarnOleCreateStream(parent, names.back().c_str(), nullptr, &out.hr,
                                                    out.text, sizeof out.text)
                              : nullptr);
  if (!stream.p) return Fail(args.path, out.Text());
  if (!bytes.empty() && !TarnOleWriteStream(stream.p, bytes.data(), static_cast<DWORD>(bytes.size()),
                                            &out.hr, out.text, sizeof out.text))
    return Fail(args.path, out.Text());
  return 0;
}

}  // namespace

Runner DeclareStorage(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.require_subcommand(1);
  CLI::App* list =
      command.add_subcommand("list", "every storage and stream, with sizes and class identifiers");
  list->add_option("file", args->file, "a compound file")->required();
  AddJsonFlag(*list, args->json);
  CLI::App* cat = command.add_subcommand("cat", "a stream's bytes, on stdout or into a file");
  cat->add_option("file", args->file, "a compound file")->required();
  cat->add_option("path", args->path, "the stream, as STORAGE/.../STREAM")->required();
  cat->add_option("-o,--out", args->out, "the file to write the bytes to");
  CLI::App* add = command.add_subcommand("add", "a file as a stream (replacing one of that name)");
  add->add_option("file", args->file, "a compound file, created when missing")->required();
  add->add_option("path", args->path, "the stream, as STORAGE/.../STREAM; storages are created")
      ->required();
  add->add_option("source", args->source, "the file whose bytes the stream gets")->required();
  return [args, list, cat] {
    if (list->parsed()) return RunList(*args);
    return cat->parsed() ? RunCat(*args) : RunAdd(*args);
  };
}

}  // namespace tarn_tool
