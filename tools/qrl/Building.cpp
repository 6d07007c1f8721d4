// Licence: MIT, see LICENSE.
#include "tools/qrl/Building.h"

#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <memory>

#include "tools/qrl/Codes.h"
#include "tools/qrl/Errors.h"
#include "tools/qrl/ExitStatus.h"

namespace qrl {
namespace {

// A value, or a list or record of nodes.
struct Node {
  Step step;  // from its list or record; of a parameter its key
  Value value{};
  std::vector<Node> items{};

  bool isContainer() const { return value.type == typeAEList || value.type == typeAERecord; }
};

[[noreturn]] void refuse(const Parameter& parameter, const std::string& why) {
  throw UsageError("parameter " + formatCode(parameter.key) + ": " + why);
}

// Makes a node the list or record that a step goes into.
void makeContainer(Node& node, const Step& step, const Parameter& parameter) {
  const OSType type = step.to == Step::To::kItem ? OSType{typeAEList} : OSType{typeAERecord};
  if (node.value.type == 0) node.value.type = type;
  if (node.value.type != type || !node.value.bytes.empty()) {
    refuse(parameter, formatStep(step) + " is given, and something else in its place");
  }
}

Node& nodeAt(Node& node, const Step& step, const Parameter& parameter) {
  makeContainer(node, step, parameter);
  auto found = std::ranges::find(node.items, step, &Node::step);
  if (found != node.items.end()) return *found;
  if (step.to == Step::To::kItem && step.place != node.items.size() + 1) {
    refuse(parameter, "the item before " + formatStep(step) + " is missing");
  }
  return node.items.emplace_back(Node{step});
}

void place(std::vector<Node>& tree, const Parameter& parameter) {
  const Step key{Step::To::kField, parameter.key};
  auto found = std::ranges::find(tree, key, &Node::step);
  Node* node = found != tree.end() ? &*found : &tree.emplace_back(Node{key});
  for (const Step& step : parameter.steps) node = &nodeAt(*node, step, parameter);
  if (!node->items.empty()) refuse(parameter, "a value is given, and items in its place");
  node->value = parameter.value;
}

struct Dispose {
  void operator()(AEDesc* desc) const { AEDisposeDesc(desc); }
};
using StackDesc = std::unique_ptr<AEDesc, Dispose>;

OSErr makeDesc(const Node& node, AEDesc& result) {
  if (!node.isContainer() || !node.value.bytes.empty()) {
    return AECreateDesc(node.value.type, node.value.bytes.data(),
                        static_cast<Size>(node.value.bytes.size()), &result);
  }
  const bool isRecord = node.value.type == typeAERecord;
  OSErr error = AECreateList(nullptr, 0, isRecord, &result);
  StackDesc made(&result);
  for (const Node& item : node.items) {
    AEDesc desc;
    AEInitializeDesc(&desc);
    const StackDesc held(&desc);
    if (error == noErr) error = makeDesc(item, desc);
    if (error != noErr) return error;
    error = isRecord ? AEPutKeyDesc(&result, item.step.place, &desc) : AEPutDesc(&result, 0, &desc);
  }
  if (error == noErr) static_cast<void>(made.release());
  return error;
}

}  // namespace

OSErr putParameters(AppleEvent& event, const std::vector<Parameter>& parameters) {
  std::vector<Node> tree;
  for (const Parameter& parameter : parameters) place(tree, parameter);
  for (const Node& node : tree) {
    AEDesc desc;
    AEInitializeDesc(&desc);
    const StackDesc held(&desc);
    OSErr error = makeDesc(node, desc);
    if (error == noErr) error = AEPutParamDesc(&event, node.step.place, &desc);
    if (error == memFullErr) return error;
    if (error != noErr) {
      throw UsageError("parameter " + formatCode(node.step.place) + ": " + describeError(error));
    }
  }
  return noErr;
}

}  // namespace qrl
