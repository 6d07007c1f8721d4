// Licence: MIT, see LICENSE.
#include "platform/userinterface/AlertLookup.h"

#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>

#include "platform/userinterface/DisplayText.h"

namespace platform::userinterface {
namespace {

/// The bytes of a resource, as long as nobody touches the handle.
std::optional<Bytes> resourceBytes(ResType type, ResID id) {
  Handle resource = GetResource(type, id);
  if (resource == nullptr) return std::nullopt;
  LoadResource(resource);  // also where loading is switched off
  if (ResError() != noErr) return std::nullopt;
  const auto* data = reinterpret_cast<const std::byte*>(*resource);
  return Bytes(data, static_cast<std::size_t>(GetHandleSize(resource)));
}

}  // namespace

std::optional<StoredAlert> findAlert(ResID alertID) {
  auto form = resourceBytes('ALRT', alertID);
  auto alert = form ? parseAlert(*form) : std::nullopt;
  if (!alert) return std::nullopt;
  auto list = resourceBytes('DITL', alert->items);
  auto items = list ? parseItems(*list) : std::nullopt;
  if (!items) return std::nullopt;
  return StoredAlert{*alert, std::move(*items)};
}

AlertContents contentsOf(const StoredAlert& alert, const AlertStage& stage) {
  AlertContents contents;
  contents.defaultItem = stage.defaultItem;
  contents.sounds = stage.sounds;
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < alert.items.size(); ++i) {
    const DialogItem& item = alert.items[i];
    const std::string text = displayText(item.text);
    if (item.type == kButtonDialogItem) {
      contents.buttons.push_back({static_cast<DialogItemIndex>(i + 1), text});
    } else if (item.type == kStaticTextDialogItem) {
      texts.push_back(text);
    }
  }
  if (contents.buttons.empty()) contents.buttons.push_back({stage.defaultItem, "OK"});
  if (texts.size() > 1) {
    contents.title = texts.front();
    texts.erase(texts.begin());
  }
  for (const std::string& text : texts) {
    if (!contents.text.empty()) contents.text += '\n';
    contents.text += text;
  }
  return contents;
}

}  // namespace platform::userinterface
