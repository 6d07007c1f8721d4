// Licence: MIT, see LICENSE.
#include "platform/appleevents/CoercionHandlers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/appleevents/Printing.h"
#include "tests/support/AllocationFailures.h"

namespace {

using tests::coerced;
using tests::Desc;

AECoercionHandlerUPP handlerOf(AECoercePtrProcPtr procedure) {
  return reinterpret_cast<AECoercionHandlerUPP>(NewAECoercePtrUPP(procedure));
}
AECoercionHandlerUPP handlerOf(AECoerceDescProcPtr procedure) {
  return reinterpret_cast<AECoercionHandlerUPP>(NewAECoerceDescUPP(procedure));
}

/// What a handler was called with: its kind, the types, the data and its refcon.
std::vector<std::string> gCalls;

void note(const char* kind, DescType from, std::string_view data, DescType to, SInt32 refcon) {
  gCalls.push_back(std::string(kind) + " " + tests::codeText(from) + " \"" + std::string(data) +
                   "\" -> " + tests::codeText(to) + " " + std::to_string(refcon));
}

/// Makes text of its refcon.
OSErr fromPtr(DescType type, const void* data, Size size, DescType toType, SInt32 refcon,
              AEDesc* result) {
  EXPECT_EQ(result->dataHandle, nullptr);
  note("ptr", type, {static_cast<const char*>(data), static_cast<std::size_t>(size)}, toType,
       refcon);
  const std::string text = "ptr " + std::to_string(refcon);
  return AECreateDesc(typeChar, text.data(), static_cast<Size>(text.size()), result);
}

OSErr fromDesc(const AEDesc* desc, DescType toType, SInt32 refcon, AEDesc* result) {
  std::string data(static_cast<std::size_t>(AEGetDescDataSize(desc)), '\0');
  EXPECT_EQ(AEGetDescData(desc, data.data(), static_cast<Size>(data.size())), noErr);
  note("desc", desc->descriptorType, data, toType, refcon);
  const std::string text = "desc " + std::to_string(refcon);
  return AECreateDesc(typeChar, text.data(), static_cast<Size>(text.size()), result);
}

/// Answers its refcon, and leaves something behind in the result.
OSErr failing(DescType, const void*, Size, DescType, SInt32 refcon, AEDesc* result) {
  EXPECT_EQ(AECreateDesc(typeChar, "left", 4, result), noErr);
  return static_cast<OSErr>(refcon);
}

class CoercionHandlers : public testing::Test {
 protected:
  CoercionHandlers() { gCalls.clear(); }
  ~CoercionHandlers() override {
    for (const auto& [from, to, isSystem] : installed) {
      AERemoveCoercionHandler(from, to, nullptr, isSystem);
    }
  }

  template <typename Procedure>
  void install(DescType from, DescType to, Procedure procedure, SInt32 refcon,
               Boolean isSystem = false) {
    const bool takesDesc = std::is_same_v<Procedure, AECoerceDescProcPtr>;
    ASSERT_EQ(AEInstallCoercionHandler(from, to, handlerOf(procedure), refcon, takesDesc, isSystem),
              noErr);
    installed.push_back({from, to, isSystem});
  }

  struct Installed {
    DescType from;
    DescType to;
    Boolean isSystem;
  };
  std::vector<Installed> installed;
  Desc source = tests::makeValue<UInt16>('zzzz', 0x4141);
};

TEST_F(CoercionHandlers, GetABlock) {
  install('zzzz', typeChar, &fromPtr, 7);
  EXPECT_EQ(coerced(*&source, typeChar), "\"ptr 7\"");
  Desc result;
  EXPECT_EQ(AECoercePtr('zzzz', "BBB", 3, typeChar, &result), noErr);
  EXPECT_EQ(tests::textOf(result), "ptr 7");
  EXPECT_EQ(gCalls,
            (std::vector<std::string>{"ptr zzzz \"AA\" -> TEXT 7", "ptr zzzz \"BBB\" -> TEXT 7"}));
}

TEST_F(CoercionHandlers, GetADescriptor) {
  install('zzzz', typeChar, &fromDesc, -8);
  EXPECT_EQ(coerced(*&source, typeChar), "\"desc -8\"");
  Desc result;
  EXPECT_EQ(AECoercePtr('zzzz', "BBB", 3, typeChar, &result), noErr);
  EXPECT_EQ(tests::textOf(result), "desc -8");
  EXPECT_EQ(gCalls, (std::vector<std::string>{"desc zzzz \"AA\" -> TEXT -8",
                                              "desc zzzz \"BBB\" -> TEXT -8"}));
}

TEST_F(CoercionHandlers, GoBeforeWhatEveryProcessKnows) {
  install(typeSInt16, typeChar, &fromPtr, 1);
  const Desc number = tests::makeValue<SInt16>(typeSInt16, 42);
  EXPECT_EQ(coerced(*&number, typeChar), "\"ptr 1\"");
}

TEST_F(CoercionHandlers, ServeReadersOfParametersAndAttributes) {
  install('zzzz', typeChar, &fromPtr, 5);
  Desc event = tests::makeEvent();
  ASSERT_EQ(AEPutParamDesc(&event, 'parm', &source), noErr);
  ASSERT_EQ(AEPutAttributeDesc(&event, 'attr', &source), noErr);
  std::array<char, 8> text{};
  EXPECT_EQ(AEGetParamPtr(&event, 'parm', typeChar, nullptr, text.data(), 8, nullptr), noErr);
  EXPECT_STREQ(text.data(), "ptr 5");
  Desc attribute;
  EXPECT_EQ(AEGetAttributeDesc(&event, 'attr', typeChar, &attribute), noErr);
  EXPECT_EQ(tests::textOf(attribute), "ptr 5");
}

TEST_F(CoercionHandlers, ServeTheItemOfAListOfOne) {
  install('zzzz', typeChar, &fromPtr, 5);
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutDesc(&list, 0, &source), noErr);
  EXPECT_EQ(coerced(*&list, typeChar), "\"ptr 5\"");
}

TEST_F(CoercionHandlers, AreNotAskedForWhatTheDataIs) {
  install(typeWildCard, typeWildCard, &fromPtr, 1);
  EXPECT_EQ(coerced(*&source, 'zzzz'), "'zzzz'($4141$)");
  EXPECT_EQ(coerced(*&source, typeWildCard), "'zzzz'($4141$)");
  EXPECT_EQ(coerced(*&source, typeBest), "'zzzz'($4141$)");
  EXPECT_EQ(gCalls.size(), 0u);
}

TEST_F(CoercionHandlers, AreTakenInTheirOrder) {
  const struct {
    DescType from, to;
    Boolean isSystem;
  } order[] = {{typeWildCard, typeWildCard, true},  {typeWildCard, typeChar, true},
               {'zzzz', typeWildCard, true},        {'zzzz', typeChar, true},
               {typeWildCard, typeWildCard, false}, {typeWildCard, typeChar, false},
               {'zzzz', typeWildCard, false},       {'zzzz', typeChar, false}};
  SInt32 refcon = 0;
  for (const auto& [from, to, isSystem] : order) {
    install(from, to, &fromPtr, ++refcon, isSystem);
    EXPECT_EQ(coerced(*&source, typeChar), "\"ptr " + std::to_string(refcon) + "\"");
  }
}

TEST_F(CoercionHandlers, LetTheNextTryWhatTheyCannotDo) {
  install('zzzz', typeChar, &failing, errAECoercionFail);
  EXPECT_EQ(coerced(*&source, typeChar), "<-1700>");
  install(typeWildCard, typeChar, &fromPtr, 2, true);
  EXPECT_EQ(coerced(*&source, typeChar), "\"ptr 2\"");
  install(typeSInt16, typeWildCard, &failing, errAECoercionFail);
  install(typeWildCard, typeChar, &failing, errAECoercionFail, true);
  const Desc number = tests::makeValue<SInt16>(typeSInt16, 42);
  EXPECT_EQ(coerced(*&number, typeChar), "\"42\"");
}

TEST_F(CoercionHandlers, EndACoercionWithAnyOtherError) {
  install(typeSInt16, typeChar, &failing, -12345);
  install(typeSInt16, typeChar, &fromPtr, 1, true);
  const Desc number = tests::makeValue<SInt16>(typeSInt16, 42);
  EXPECT_EQ(coerced(*&number, typeChar), "<-12345>");
  EXPECT_EQ(gCalls.size(), 0u);
}

TEST_F(CoercionHandlers, MayGiveAnotherTypeThanAsked) {
  install('zzzz', typeSInt32, &fromPtr, 3);
  EXPECT_EQ(coerced(*&source, typeSInt32), "\"ptr 3\"");
}

TEST_F(CoercionHandlers, TakeThePlaceOfEarlierOnes) {
  install('zzzz', typeChar, &fromPtr, 1);
  install('zzzz', typeChar, &fromDesc, 2);
  EXPECT_EQ(coerced(*&source, typeChar), "\"desc 2\"");
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, nullptr, false), noErr);
  EXPECT_EQ(coerced(*&source, typeChar), "<-1700>");
}

// -- The tables --

TEST_F(CoercionHandlers, AreGivenAsInstalled) {
  install('zzzz', typeChar, &fromPtr, 11);
  install('zzzz', typeChar, &fromDesc, 22, true);
  const struct {
    Boolean isSystem, takesDesc;
    SInt32 refcon;
    AECoercionHandlerUPP handler;
  } cases[] = {{false, false, 11, handlerOf(&fromPtr)}, {true, true, 22, handlerOf(&fromDesc)}};
  for (const auto& [isSystem, takesDesc, refcon, expected] : cases) {
    AECoercionHandlerUPP handler = nullptr;
    SInt32 found = 0;
    Boolean isDesc = 9;
    EXPECT_EQ(AEGetCoercionHandler('zzzz', typeChar, &handler, &found, &isDesc, isSystem), noErr);
    EXPECT_EQ(handler, expected);
    EXPECT_EQ(found, refcon);
    EXPECT_EQ(isDesc, takesDesc);
  }
}

TEST_F(CoercionHandlers, AreGivenForExactlyTheirTypes) {
  install(typeWildCard, typeChar, &fromPtr, 11);
  AECoercionHandlerUPP handler = nullptr;
  SInt32 refcon = 5;
  Boolean isDesc = 9;
  EXPECT_EQ(AEGetCoercionHandler('zzzz', typeChar, &handler, &refcon, &isDesc, false),
            errAEHandlerNotFound);
  EXPECT_EQ(AEGetCoercionHandler(typeWildCard, typeChar, &handler, &refcon, &isDesc, true),
            errAEHandlerNotFound);
  EXPECT_EQ(handler, nullptr);
  EXPECT_EQ(refcon, 5);
  EXPECT_EQ(isDesc, 9);
}

TEST_F(CoercionHandlers, AreRemovedWhenTheyAreTheOnesMeant) {
  install('zzzz', typeChar, &fromPtr, 1);
  const AECoercionHandlerUPP own = handlerOf(&fromPtr);
  const AECoercionHandlerUPP other = handlerOf(&fromDesc);
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, other, false), errAEHandlerNotFound);
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, own, true), errAEHandlerNotFound);
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeSInt32, own, false), errAEHandlerNotFound);
  EXPECT_EQ(coerced(*&source, typeChar), "\"ptr 1\"");
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, own, false), noErr);
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, own, false), errAEHandlerNotFound);
  EXPECT_EQ(coerced(*&source, typeChar), "<-1700>");
}

TEST_F(CoercionHandlers, RefuseBadArguments) {
  AECoercionHandlerUPP handler = nullptr;
  SInt32 refcon = 0;
  Boolean isDesc = 0;
  EXPECT_EQ(AEInstallCoercionHandler('zzzz', typeChar, nullptr, 0, false, false), paramErr);
  EXPECT_EQ(AEGetCoercionHandler('zzzz', typeChar, nullptr, &refcon, &isDesc, false), paramErr);
  EXPECT_EQ(AEGetCoercionHandler('zzzz', typeChar, &handler, nullptr, &isDesc, false), paramErr);
  EXPECT_EQ(AEGetCoercionHandler('zzzz', typeChar, &handler, &refcon, nullptr, false), paramErr);
}

TEST_F(CoercionHandlers, NeedMemory) {
  {
    const tests::AllocationFailure failure(1);
    EXPECT_EQ(AEInstallCoercionHandler('zzzz', typeChar, handlerOf(&fromPtr), 0, false, false),
              memFullErr);
  }
  EXPECT_EQ(AERemoveCoercionHandler('zzzz', typeChar, nullptr, false), errAEHandlerNotFound);
}

// A handler gets a block as a descriptor, for which there may be no memory.
TEST_F(CoercionHandlers, FailWithEachAllocation) {
  install(
      'zzzz', typeChar,
      +[](const AEDesc*, DescType, SInt32, AEDesc* result) {
        return AECreateDesc(typeChar, "made", 4, result);
      },
      0);
  const UInt32 allocations = tests::failEachAllocation(
      [&] {
        Desc result;
        return AECoercePtr('zzzz', "AA", 2, typeChar, &result);
      },
      [](OSErr status, bool failed) {
        EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
      });
  EXPECT_EQ(allocations, 4u);
}

}  // namespace
