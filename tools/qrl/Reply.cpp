// Licence: MIT, see LICENSE.
#include "tools/qrl/Reply.h"

#include <CarbonCore/MacErrors.h>

#include <nlohmann/json.hpp>

#include "tools/qrl/Codes.h"
#include "tools/qrl/Values.h"

namespace qrl {
namespace {

using Json = nlohmann::ordered_json;

class OwnedDesc final {
 public:
  OwnedDesc() { AEInitializeDesc(&desc); }
  ~OwnedDesc() { AEDisposeDesc(&desc); }
  OwnedDesc(const OwnedDesc&) = delete;
  OwnedDesc& operator=(const OwnedDesc&) = delete;

  AEDesc desc;
};

bool hasItems(const AEDesc& desc) {
  return desc.descriptorType == typeAEList || desc.descriptorType == typeAppleEvent ||
         AECheckIsRecord(&desc);
}

// Calls visit(keyword, item, index) for each item that can be read.
template <typename Visit>
void forEachItem(const AEDesc& list, Visit visit) {
  SInt32 count = 0;
  if (AECountItems(&list, &count) != noErr) return;
  for (SInt32 index = 1; index <= count; ++index) {
    OwnedDesc item;
    AEKeyword keyword = 0;
    if (AEGetNthDesc(&list, index, typeWildCard, &keyword, &item.desc) != noErr) continue;
    visit(keyword, item.desc, index);
  }
}

Value valueOf(const AEDesc& desc) {
  Value value{desc.descriptorType, std::string(static_cast<size_t>(AEGetDescDataSize(&desc)), 0)};
  AEGetDescData(&desc, value.bytes.data(), static_cast<Size>(value.bytes.size()));
  return value;
}

void addLines(const std::string& path, const AEDesc& desc, std::vector<std::string>& lines) {
  if (!hasItems(desc)) {
    lines.push_back(path + '=' + formatValue(valueOf(desc)));
    return;
  }
  bool isList = desc.descriptorType == typeAEList;
  bool isEmpty = true;
  forEachItem(desc, [&](AEKeyword keyword, const AEDesc& item, SInt32 index) {
    Step step = isList ? Step{Step::To::kItem, static_cast<UInt32>(index)}
                       : Step{Step::To::kField, keyword};
    addLines(path + formatStep(step), item, lines);
    isEmpty = false;
  });
  if (isEmpty) lines.push_back(path + '=' + formatCode(desc.descriptorType) + ':');
}

Json jsonOfDesc(const AEDesc& desc) {
  if (!hasItems(desc)) return jsonOf(valueOf(desc));
  Json items = Json::array();
  forEachItem(desc, [&](AEKeyword keyword, const AEDesc& item, SInt32) {
    Json json = Json::object();
    if (desc.descriptorType != typeAEList) json["key"] = formatCode(keyword);
    json.update(jsonOfDesc(item));
    items.push_back(json);
  });
  return {{"type", formatCode(desc.descriptorType)}, {"items", items}};
}

}  // namespace

std::vector<std::string> linesOf(const AppleEvent& event, AEKeyword leftOut) {
  std::vector<std::string> lines;
  forEachItem(event, [&](AEKeyword keyword, const AEDesc& item, SInt32) {
    if (keyword != leftOut) addLines(formatCode(keyword), item, lines);
  });
  return lines;
}

Json jsonOf(const AppleEvent& event) { return jsonOfDesc(event)["items"]; }

}  // namespace qrl
