// Licence: MIT, see LICENSE.
#include "platform/userinterface/AlertResource.h"

#include "platform/resources/BigEndian.h"

namespace platform::userinterface {
namespace {

using resources::Reader;

constexpr std::size_t kRectSize = 8;

AlertStage stageFrom(unsigned bits) {
  const bool second = (bits & 8) != 0;
  return {second ? DialogItemIndex{kStdCancelItemIndex} : DialogItemIndex{kStdOkItemIndex},
          (bits & 4) != 0, static_cast<int>(bits & 3)};
}

}  // namespace

std::optional<AlertTemplate> parseAlert(Bytes resource) {
  Reader reader(resource);
  reader.take(kRectSize);
  AlertTemplate alert;
  alert.items = reader.s16();
  const unsigned stages = reader.u16();
  if (reader.failed()) return std::nullopt;
  for (std::size_t i = 0; i < alert.stages.size(); ++i) {
    alert.stages[i] = stageFrom(stages >> (4 * i) & 0xF);
  }
  return alert;
}

std::optional<std::vector<DialogItem>> parseItems(Bytes resource) {
  Reader reader(resource);
  const std::size_t count = static_cast<UInt16>(reader.u16() + 1);
  std::vector<DialogItem> items;
  for (std::size_t i = 0; i < count && !reader.failed(); ++i) {
    reader.take(sizeof(UInt32) + kRectSize);
    DialogItem item;
    item.type = static_cast<UInt8>(reader.u8() & ~kItemDisableBit);
    const std::size_t size = reader.u8();
    const Bytes text = reader.take(size);
    item.text.assign(reinterpret_cast<const char*>(text.data()), text.size());
    // The last item's padding may be missing.
    if (size % 2 != 0 && reader.remaining() > 0) reader.take(1);
    items.push_back(std::move(item));
  }
  if (reader.failed()) return std::nullopt;
  return items;
}

}  // namespace platform::userinterface
