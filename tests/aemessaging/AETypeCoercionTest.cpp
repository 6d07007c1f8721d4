// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/AETypeCoercion.h>

#include <string>
#include <vector>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/AllocationFailures.h"

namespace {

using tests::Desc;

AEDesc& asResult(Desc& desc) { return *&desc; }

// -- OSTypeInList --

struct ListCase {
  DescType type;
  std::vector<DescType> list;
  DescType found;
};

constexpr DescType kWild = 'wild';
constexpr DescType kBest = 'bst ';

TEST(TypeInList, ComparesBeforeItAnswersWildCards) {
  const ListCase cases[] = {
      {'long', {'long', 'TEXT'}, 'long'},
      {'TEXT', {'long', 'TEXT'}, 'TEXT'},
      {'shor', {'long', 'TEXT'}, 0},
      {typeWildCard, {'long', 'TEXT'}, kWild},
      {typeBest, {'long', 'TEXT'}, kBest},
      {typeWildCard, {typeWildCard, 'TEXT'}, typeWildCard},
      {typeBest, {typeBest, 'TEXT'}, typeBest},
      {typeWildCard, {'long', typeWildCard}, kWild},
      {typeBest, {'long', typeBest}, kBest},
      {'long', {typeWildCard, typeBest}, 0},
      {'long', {typeWildCard, 'long'}, 'long'},
      {typeWildCard, {}, 0},
  };
  for (const auto& [type, list, found] : cases) {
    EXPECT_EQ(OSTypeInList(type, list.data(), static_cast<SInt32>(list.size()), kWild, kBest),
              found)
        << tests::textOf(tests::makeValue(typeType, type));
  }
}

TEST(TypeInList, AnswersAWildCardWithTheWildType) {
  const DescType list[] = {'long', 'TEXT'};
  EXPECT_EQ(OSTypeInList(typeWildCard, list, 2, 'TEXT', 'long'), DescType{'TEXT'});
}

TEST(TypeInList, FindsNothingWithoutAList) {
  const DescType list[] = {'long'};
  EXPECT_EQ(OSTypeInList('shor', nullptr, 5, kWild, kBest), 0u);
  EXPECT_EQ(OSTypeInList(typeWildCard, nullptr, 5, kWild, kBest), 0u);
  EXPECT_EQ(OSTypeInList('long', list, 0, kWild, kBest), 0u);
  EXPECT_EQ(OSTypeInList(typeBest, list, -1, kWild, kBest), 0u);
}

// -- To one type --

// Coercions that only this process has, as long as an object exists: 'zzzz' to text, and 'odd ' to
// what it says to be but is not.
class OwnCoercions final {
 public:
  OwnCoercions() {
    install('zzzz', typeChar, zzzzToText);
    install('odd ', typeSInt32, oddToLong);
  }
  ~OwnCoercions() {
    AERemoveCoercionHandler('zzzz', typeChar, nullptr, false);
    AERemoveCoercionHandler('odd ', typeSInt32, nullptr, false);
  }
  OwnCoercions(const OwnCoercions&) = delete;
  OwnCoercions& operator=(const OwnCoercions&) = delete;

 private:
  static void install(DescType from, DescType to, AECoercePtrProcPtr handler) {
    EXPECT_EQ(AEInstallCoercionHandler(from, to, reinterpret_cast<AECoercionHandlerUPP>(handler), 0,
                                       false, false),
              noErr);
  }
  static OSErr zzzzToText(DescType, const void*, Size size, DescType, SInt32, AEDesc* result) {
    const std::string text(static_cast<std::size_t>(size), 'z');
    return AECreateDesc(typeChar, text.data(), size, result);
  }
  static OSErr oddToLong(DescType, const void*, Size, DescType, SInt32, AEDesc* result) {
    return AECreateDesc(typeSInt16, "ab", 2, result);
  }
};

TEST(CoerceToType, CopiesWhatHasTheTypeOrWhenAnyWillDo) {
  const Desc source = tests::makeText("hello");
  for (const DescType type : {DescType{typeChar}, DescType{typeWildCard}, DescType{typeBest}}) {
    Desc result = tests::makeText("old");
    EXPECT_EQ(AECoerceDescToType(*&source, type, asResult(result)), noErr);
    EXPECT_EQ(result.type(), DescType{typeChar});
    EXPECT_EQ(tests::textOf(result), "hello");
  }
}

TEST(CoerceToType, LeavesADescriptorThatIsItsOwnResult) {
  Desc desc = tests::makeText("hello");
  const AEDataStorage before = (*&desc).dataHandle;
  for (const DescType type : {DescType{typeChar}, DescType{typeWildCard}, DescType{typeBest}}) {
    EXPECT_EQ(AECoerceDescToType(*&desc, type, asResult(desc)), noErr);
    EXPECT_EQ((*&desc).dataHandle, before);
  }
}

TEST(CoerceToType, CoercesInPlace) {
  Desc desc = tests::makeText("42");
  ASSERT_EQ(AECoerceDescToType(*&desc, typeSInt32, asResult(desc)), noErr);
  EXPECT_EQ(desc.type(), DescType{typeSInt32});
  EXPECT_EQ(tests::valueOf<SInt32>(desc), 42);
}

TEST(CoerceToType, KeepsTheResultOnFailure) {
  const Desc source = tests::makeText("no number");
  Desc result = tests::makeText("old");
  EXPECT_EQ(AECoerceDescToType(*&source, typeSInt32, asResult(result)), errAECoercionFail);
  EXPECT_EQ(tests::textOf(result), "old");
}

TEST(CoerceToType, RefusesACoercionThatGivesAnotherType) {
  const OwnCoercions own;
  const Desc source = tests::makeValue<char>('odd ', 'x');
  Desc result = tests::makeText("old");
  EXPECT_EQ(AECoerceDescToType(*&source, typeSInt32, asResult(result)), errAECoercionFail);
  EXPECT_EQ(tests::textOf(result), "old");
}

TEST(CoerceToType, ReachesFormsOfTextThroughText) {
  const OwnCoercions own;
  const Desc source = tests::makeValue<SInt16>('zzzz', 0);
  const std::pair<DescType, std::string> cases[] = {
      {typeCString, std::string("zz\0", 3)},
      {typePString, "\2zz"},
      {typeEncodedString, std::string("\0\0\0\0zz", 6)},
  };
  for (const auto& [type, bytes] : cases) {
    Desc direct;
    EXPECT_EQ(AECoerceDesc(&source, type, &direct), errAECoercionFail);
    Desc result;
    ASSERT_EQ(AECoerceDescToType(*&source, type, asResult(result)), noErr);
    EXPECT_EQ(result.type(), type);
    EXPECT_EQ(tests::textOf(result), bytes);
  }
  for (const DescType type : {DescType{typeUnicodeText}, DescType{typeStyledUnicodeText}}) {
    Desc result;
    ASSERT_EQ(AECoerceDescToType(*&source, type, asResult(result)), noErr);
    EXPECT_EQ(result.type(), type);
    EXPECT_EQ(tests::valueOf<UInt32>(result), 0x007A007Au);
  }
}

TEST(CoerceToType, ReachesNothingElseThroughText) {
  const OwnCoercions own;
  const Desc source = tests::makeValue<SInt16>('zzzz', 0);
  Desc result;
  EXPECT_EQ(AECoerceDescToType(*&source, typeUTF8Text, asResult(result)), errAECoercionFail);
  EXPECT_EQ(AECoerceDescToType(*&source, typeSInt32, asResult(result)), errAECoercionFail);
}

TEST(CoerceToType, FailsForTextThatAFormCannotHold) {
  const Desc source = tests::makeText(std::string(256, 'x'));
  Desc result;
  EXPECT_EQ(AECoerceDescToType(*&source, typePString, asResult(result)), errAECoercionFail);
  const Desc cut = tests::makeText(std::string_view("a\0b", 3));
  EXPECT_EQ(AECoerceDescToType(*&cut, typeCString, asResult(result)), errAECoercionFail);
  EXPECT_TRUE(result.isNull());
}

TEST(CoerceToType, ReturnsWhyThereIsNoTextEither) {
  const Desc source = tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {0, 1});
  Desc result;
  EXPECT_EQ(AECoerceDescToType(*&source, typeCString, asResult(result)), errAECoercionFail);
  EXPECT_TRUE(result.isNull());
}

// -- To the first type of a list --

struct ToListCase {
  const char* name;
  std::vector<DescType> list;
  OSErr status;
  DescType type;
};

const ToListCase kToLists[] = {
    {"own type first", {'long', 'TEXT'}, noErr, 'TEXT'},
    {"first that can be had", {'psn ', 'long', 'doub'}, noErr, 'long'},
    {"wild card", {'psn ', typeWildCard}, noErr, 'comp'},
    {"best", {'psn ', typeBest, 'long'}, noErr, 'shor'},
    {"none", {'psn ', 'type'}, errAECoercionFail, 'old '},
    {"no list", {}, errAECoercionFail, 'old '},
};

TEST(CoerceToTypeList, TakesTheFirstThatCanBeHad) {
  const Desc source = tests::makeText("12");
  for (const auto& [name, list, status, type] : kToLists) {
    SCOPED_TRACE(name);
    const auto count = static_cast<SInt32>(list.size());
    Desc result = tests::makeValue<char>('old ', 'o');
    EXPECT_EQ(
        AECoerceDescToTypeList(*&source, asResult(result), list.data(), count, 'comp', 'shor'),
        status);
    EXPECT_EQ(result.type(), type);
    Desc fromPtr = tests::makeValue<char>('old ', 'o');
    EXPECT_EQ(AECoercePtrToTypeList(typeChar, "12", 2, asResult(fromPtr), list.data(), count,
                                    'comp', 'shor'),
              status);
    EXPECT_EQ(fromPtr.type(), type);
    EXPECT_EQ(tests::bytesOf(fromPtr), tests::bytesOf(result));
  }
}

TEST(CoerceToTypeList, FailsWithoutAList) {
  const Desc source = tests::makeText("12");
  const DescType list[] = {'long'};
  Desc result;
  EXPECT_EQ(AECoerceDescToTypeList(*&source, asResult(result), nullptr, 5, 'comp', 'shor'),
            errAECoercionFail);
  EXPECT_EQ(AECoerceDescToTypeList(*&source, asResult(result), list, 0, 'comp', 'shor'),
            errAECoercionFail);
  EXPECT_EQ(AECoerceDescToTypeList(*&source, asResult(result), list, -1, 'comp', 'shor'),
            errAECoercionFail);
  EXPECT_EQ(AECoercePtrToTypeList(typeChar, "12", 2, asResult(result), nullptr, 5, 'comp', 'shor'),
            errAECoercionFail);
  EXPECT_TRUE(result.isNull());
}

// A source that itself says "any type" is answered by the wild type, and that failing by the list.
TEST(CoerceToTypeList, TriesTheWildTypeForAWildSource) {
  const Desc source = tests::makeValue<char>(typeWildCard, 'x');
  const DescType list[] = {'long', typeBest};
  Desc result;
  EXPECT_EQ(AECoerceDescToTypeList(*&source, asResult(result), list, 2, typeAEList, 'comp'), noErr);
  EXPECT_EQ(result.type(), DescType{typeAEList});
  EXPECT_EQ(AECoerceDescToTypeList(*&source, asResult(result), list, 2, 'shor', typeBest), noErr);
  EXPECT_EQ(result.type(), DescType{typeWildCard});
}

TEST(CoerceToTypeList, ReturnsTheLastAttemptsResult) {
  const DescType list[] = {typeAppleEvent, typeSInt32};
  Desc result;
  EXPECT_EQ(
      AECoercePtrToTypeList(typeAppleEvent, "x", 1, asResult(result), list, 2, 'comp', 'shor'),
      errAECorruptData);
  const Desc text = tests::makeText("x");
  EXPECT_EQ(AECoerceDescToTypeList(*&text, asResult(result), list, 2, 'comp', 'shor'),
            errAECoercionFail);
}

// -- From blocks --

TEST(CoercePtrToDesc, CopiesABlock) {
  Desc result = tests::makeText("old");
  EXPECT_EQ(AECopyPtrToDesc(typeChar, "hello", 5, asResult(result)), noErr);
  EXPECT_EQ(tests::textOf(result), "hello");
  for (const DescType type : {DescType{typeWildCard}, DescType{typeBest}}) {
    EXPECT_EQ(AECoercePtrToDesc(typeChar, "any", 3, type, asResult(result)), noErr);
    EXPECT_EQ(result.type(), DescType{typeChar});
    EXPECT_EQ(tests::textOf(result), "any");
  }
}

TEST(CoercePtrToDesc, CoercesABlock) {
  Desc result = tests::makeText("old");
  ASSERT_EQ(AECoercePtrToDesc(typeChar, "42", 2, typeSInt32, asResult(result)), noErr);
  EXPECT_EQ(tests::valueOf<SInt32>(result), 42);
}

TEST(CoercePtrToDesc, FallsBackOnADescriptorThatIsCoercedInSteps) {
  const OwnCoercions own;
  Desc result;
  ASSERT_EQ(AECoercePtrToDesc('zzzz', "ab", 2, typeCString, asResult(result)), noErr);
  EXPECT_EQ(tests::textOf(result), std::string("zz\0", 3));
}

TEST(CoercePtrToDesc, FinishesACoercionThatGaveAnotherType) {
  const OwnCoercions own;
  Desc result;
  ASSERT_EQ(AECoercePtrToDesc('odd ', "x", 1, typeSInt32, asResult(result)), noErr);
  SInt16 made;
  std::memcpy(&made, "ab", 2);
  EXPECT_EQ(tests::valueOf<SInt32>(result), made);
}

TEST(CoercePtrToDesc, KeepsTheResultOnFailure) {
  Desc result = tests::makeText("old");
  EXPECT_EQ(AECoercePtrToDesc(typeChar, "no number", 9, typeSInt32, asResult(result)),
            errAECoercionFail);
  EXPECT_EQ(AECoercePtrToDesc(typeChar, nullptr, 1, typeSInt32, asResult(result)), paramErr);
  EXPECT_EQ(AECopyPtrToDesc(typeChar, "text", -1, asResult(result)), paramErr);
  EXPECT_EQ(AECopyPtrToDesc(typeAEList, "text", 4, asResult(result)), errAECorruptData);
  EXPECT_EQ(tests::textOf(result), "old");
}

// -- Each allocation failing --

TEST(CoerceToType, FailsWithEachAllocationAndLeaksNothing) {
  const Desc source = tests::makeText("hello");
  for (const DescType type : {DescType{typeChar}, DescType{typeAEList}, DescType{typeCString}}) {
    tests::failEachAllocation(
        [&] {
          Desc result;
          return AECoerceDescToType(*&source, type, asResult(result));
        },
        [&](OSErr status, bool failed) {
          EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
        });
  }
}

// A failed attempt is followed by the next, so that a list or a block may succeed all the same.
TEST(CoerceToTypeList, LeaksNothingWhicheverAllocationFails) {
  const DescType list[] = {typeSInt32, typeUnicodeText};
  tests::failEachAllocation(
      [&] {
        Desc result;
        return AECoercePtrToTypeList(typeChar, "hello", 5, asResult(result), list, 2, 'comp',
                                     'shor');
      },
      [&](OSErr status, bool failed) {
        if (status != noErr) {
          EXPECT_EQ(status, memFullErr);
        }
        if (!failed) {
          EXPECT_EQ(status, noErr);
        }
      });
}

TEST(CoercePtrToDesc, LeaksNothingWhicheverAllocationFails) {
  tests::failEachAllocation(
      [&] {
        Desc result;
        return AECoercePtrToDesc(typeChar, "hello", 5, typeUnicodeText, asResult(result));
      },
      [&](OSErr status, bool failed) {
        if (status != noErr) {
          EXPECT_EQ(status, memFullErr);
        }
        if (!failed) {
          EXPECT_EQ(status, noErr);
        }
      });
}

}  // namespace
