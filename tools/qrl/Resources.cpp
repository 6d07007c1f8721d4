// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/qrl/Codes.h"
#include "tools/qrl/Commands.h"
#include "tools/qrl/Errors.h"
#include "tools/qrl/Output.h"
#include "tools/qrl/ResourceText.h"
#include "tools/qrl/Text.h"

namespace qrl {
namespace {

using Form = ResourcesCommand::Form;

struct FoundResource {
  OSType type = 0;
  SInt16 id = 0;
  std::string name;  // UTF-8
  SInt16 attributes = 0;
  std::string data;
};

/// A resource file that is open while the object lives.
class OpenResourceFile final {
 public:
  explicit OpenResourceFile(const std::string& path) {
    FSRef ref;
    const auto* bytes = reinterpret_cast<const UInt8*>(path.c_str());
    result = static_cast<OSErr>(FSPathMakeRef(bytes, &ref, nullptr));
    if (result != noErr) return;
    number = FSOpenResFile(&ref, fsRdPerm);
    result = ResError();
  }
  ~OpenResourceFile() {
    if (number != kResFileNotOpened) CloseResFile(number);
  }
  OpenResourceFile(const OpenResourceFile&) = delete;
  OpenResourceFile& operator=(const OpenResourceFile&) = delete;

  OSErr error() const { return result; }

 private:
  SInt16 number = kResFileNotOpened;
  OSErr result = noErr;
};

/// Throws std::bad_alloc where there is no memory for the data.
FoundResource describe(Handle handle) {
  if (handle == nullptr) throw std::bad_alloc();
  FoundResource resource;
  Str255 name;
  GetResInfo(handle, &resource.id, &resource.type, name);
  resource.attributes = GetResAttrs(handle);
  resource.name = utf8FromMacRoman({reinterpret_cast<const char*>(name) + 1, name[0]});
  resource.data.assign(*handle, static_cast<std::size_t>(GetHandleSize(handle)));
  ReleaseResource(handle);
  return resource;
}

/// What the command asks for of the current file.
std::vector<FoundResource> find(const ResourcesCommand& command) {
  std::vector<FoundResource> found;
  const SInt16 types = Count1Types();
  for (SInt16 t = 1; t <= types; ++t) {
    ResType type = 0;
    Get1IndType(&type, t);
    if (command.type && *command.type != type) continue;
    const SInt16 count = Count1Resources(type);
    for (SInt16 i = 1; i <= count; ++i) {
      FoundResource resource = describe(Get1IndResource(type, i));
      if (!command.id || *command.id == resource.id) found.push_back(std::move(resource));
    }
  }
  return found;
}

nlohmann::ordered_json jsonOfResource(const FoundResource& resource, Form form) {
  nlohmann::ordered_json entry{{"type", formatCode(resource.type)}, {"id", resource.id}};
  if (!resource.name.empty()) entry["name"] = resource.name;
  entry["size"] = resource.data.size();
  entry["attributes"] = attributeWords(resource.attributes);
  if (form == Form::kText) entry["text"] = utf8FromMacRoman(resource.data);
  if (form == Form::kHexadecimal) entry["hex"] = formatHexadecimal(resource.data);
  return entry;
}

std::string attributesOf(const FoundResource& resource) {
  std::string text;
  for (const std::string& word : attributeWords(resource.attributes)) {
    text += (text.empty() ? "" : ",") + word;
  }
  return text.empty() ? "-" : text;
}

/// TYPE ID SIZE ATTRIBUTES NAME, in columns but for the last.
std::string lineOf(const FoundResource& resource) {
  constexpr std::size_t kWidths[] = {4, 6, 8};
  const std::string columns[] = {formatCode(resource.type), std::to_string(resource.id),
                                 std::to_string(resource.data.size())};
  std::string line = columns[0];
  for (std::size_t i = 1; i < std::size(columns); ++i) {
    line.append(2 + kWidths[i] - std::min(kWidths[i], columns[i].size()), ' ').append(columns[i]);
  }
  line += "  " + attributesOf(resource);
  return resource.name.empty() ? line : line + "  " + qrl::quoted(resource.name);
}

std::string shown(const FoundResource& resource, Form form) {
  return form == Form::kHexadecimal ? hexDump(resource.data) : textLines(resource.data);
}

void print(const std::vector<FoundResource>& resources, const ResourcesCommand& command) {
  // A single resource is asked for to see what is in it.
  const bool shows = command.form != Form::kList || command.id.has_value();
  for (const FoundResource& resource : resources) {
    Form form = command.form;
    if (form == Form::kList) form = isText(resource.data) ? Form::kText : Form::kHexadecimal;
    if (!command.id) std::cout << withoutControls(lineOf(resource)) << '\n';
    if (shows) std::cout << shown(resource, form);
  }
}

void printJson(const std::vector<FoundResource>& resources, const ResourcesCommand& command) {
  Form form = command.form;
  if (form == Form::kList && command.id) form = Form::kHexadecimal;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const FoundResource& resource : resources) list.push_back(jsonOfResource(resource, form));
  std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

ExitStatus failToOpen(const std::string& file, OSErr error) {
  switch (error) {
    case fnfErr:
    case dirNFErr:
      return fail(kNoInput, "there is no file " + file);
    case permErr:
    case afpAccessDenied:
      return fail(kNoInput, "the file " + file + " may not be read");
    case eofErr:
      return fail(kBadData, "the file " + file + " is empty");
    case mapReadErr:
      return fail(kBadData, file + " has no resources, or they are damaged");
    default:
      return fail(kHostFailed, "cannot read " + file + ": " + describeError(error));
  }
}

}  // namespace

ExitStatus run(const ResourcesCommand& command) {
  const OpenResourceFile file(command.file);
  if (file.error() != noErr) return failToOpen(command.file, file.error());
  const std::vector<FoundResource> resources = find(command);
  if (command.id && resources.empty()) {
    return fail(kNoSuchName, command.file + " has no resource " + formatCode(*command.type) + " " +
                                 std::to_string(*command.id));
  }
  if (command.json) {
    printJson(resources, command);
  } else {
    print(resources, command);
  }
  return kDone;
}

}  // namespace qrl
