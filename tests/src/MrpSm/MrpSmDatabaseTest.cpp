#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpSm.h"
#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpApplicantState;
using Mrp::MrpAttrDatabase;
using Mrp::MrpAttribute;
using Mrp::MrpLib;
using Mrp::MrpRegistrarState;
using Mrp::MrpSm;
using Mrp::ValueIndex;
using Octets = std::vector<std::uint8_t>;
using Quarn::Ptr;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

Octets storedOctets(const MrpAttrDatabase& entry, std::size_t count = MrpAttrDatabase::kValueOctets) {
  Octets octets;
  for (std::size_t i = 0; i < count; ++i) octets.push_back(entry.attributeValue(ValueIndex(i)));
  return octets;
}

void storeOctets(MrpAttrDatabase& entry, const Octets& octets) {
  for (std::size_t i = 0; i < octets.size(); ++i) entry.attributeValueIs(ValueIndex(i), octets[i]);
}

// An engine of one application, active, with helpers to make an attribute
// current and to fill the store directly.
class DatabaseFixture : public EngineFixture {
 protected:
  void engineIs(MrpApplication application) { engine = engineNew(application, false); }

  void currentIs(const Velo::IntfId& intfId, std::uint8_t attributeType, std::uint64_t key) {
    engine->parseContext()->intfIdIs(intfId);
    engine->parseContext()->attributeTypeIs(attributeType);
    engine->parseContext()->attributeKeyIs(key);
  }
  // A committed registration, put into the store as an earlier review would have.
  Ptr<MrpAttrDatabase> storedIs(const MrpAttribute& a) {
    engine->addToAttrIter(a.intfId, a.attributeType, a.attributeKey);
    return engine->createEntryInDatabase(a.intfId, a.attributeType, a.attributeKey);
  }
  Ptr<MrpAttrDatabase> find(const MrpAttribute& a, bool useLocalCopy) const {
    return engine->mrpGetAttrFromDatabase(a.intfId, a.attributeType, a.attributeKey, useLocalCopy);
  }
  std::vector<std::uint64_t> indexed(const Velo::IntfId& intfId, std::uint8_t attributeType) const {
    Ptr<Mrp::MrpAttrIter> iter = engine->attributeStore().mrpAttrIter({intfId, attributeType});
    if (!iter) return {};
    return {iter->attributeKeys().begin(), iter->attributeKeys().end()};
  }

  Ptr<MrpSm> engine;
};

class MrpSmDatabaseTest : public DatabaseFixture {
 protected:
  MrpSmDatabaseTest() { engineIs(MrpApplication::msrp); }
};

TEST_F(MrpSmDatabaseTest, LookupOfAMissingLevelIsNullAndCreatesNothing) {
  EXPECT_FALSE(find({kEth1, 1, 7}, true)) << "no application database";
  EXPECT_FALSE(records.mrpStatus->applicationDatabase(MrpApplication::msrp));
  storedIs({kEth1, 1, 7});
  EXPECT_FALSE(find({kEth2, 1, 7}, true)) << "no port";
  EXPECT_FALSE(find({kEth1, 2, 7}, true)) << "no type";
  EXPECT_FALSE(find({kEth1, 1, 8}, true)) << "no key";
  auto db = records.mrpStatus->applicationDatabase(MrpApplication::msrp);
  EXPECT_EQ(db->attrDatabases().size(), 1u);
  EXPECT_EQ(db->attrDatabase(kEth1)->intfTypeApplicants().size(), 1u);
  EXPECT_EQ(db->attrDatabase(kEth1)->intfTypeApplicant(1)->mrpAttributes().size(), 1u);
}

TEST_F(MrpSmDatabaseTest, StoredAttributeIsFoundWithAndWithoutPendingAdditions) {
  auto stored = storedIs({kEth1, 1, 7});
  EXPECT_EQ(find({kEth1, 1, 7}, false), stored);
  EXPECT_EQ(find({kEth1, 1, 7}, true), stored);
}

TEST_F(MrpSmDatabaseTest, PendingAdditionIsFoundOnlyWithTheLocalCopy) {
  auto pending = engine->mrpAddAttrToDatabase(kEth1, 1, 7, true);
  EXPECT_EQ(find({kEth1, 1, 7}, true), pending);
  EXPECT_FALSE(find({kEth1, 1, 7}, false));
}

TEST_F(MrpSmDatabaseTest, PendingDeletionReadsAsAbsentAndGetAttributeThenCreatesAFreshEntry) {
  auto stored = storedIs({kEth1, 1, 7});
  stored->applicantStateIs(MrpApplicantState::aa);
  stored->registrarStateIs(MrpRegistrarState::in);
  currentIs(kEth1, 1, 7);
  engine->mrpDeleteAttrFromDatabase();
  EXPECT_FALSE(find({kEth1, 1, 7}, false));
  EXPECT_FALSE(find({kEth1, 1, 7}, true));
  EXPECT_FALSE(engine->mrpGetAttribute(false));

  auto fresh = engine->mrpGetAttribute(true);
  ASSERT_TRUE(fresh);
  EXPECT_NE(fresh, stored);
  EXPECT_EQ(fresh->attributeKey(), 7u);
  EXPECT_EQ(fresh->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(fresh->registrarState(), MrpRegistrarState::mt);
  EXPECT_EQ(find({kEth1, 1, 7}, true), fresh);
}

TEST_F(MrpSmDatabaseTest, GetAttributeWithoutCreateLeavesAnAbsentAttributeAbsent) {
  currentIs(kEth1, 3, 9);
  EXPECT_FALSE(engine->mrpGetAttribute(false));
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty());
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty());
}

TEST_F(MrpSmDatabaseTest, GetAttributeCreatesAVoMtEntryHoldingTheReceivedValue) {
  mrpLib->msrpDomainVectorRx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(7, 7, 7);
  currentIs(kEth2, 4, 6);
  auto entry = engine->mrpGetAttribute(true);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(entry->registrarState(), MrpRegistrarState::mt);
  EXPECT_EQ(storedOctets(*entry, 4), (Octets{6, 3, 0, 2}));
  EXPECT_EQ(engine->attributeStore().addPendingAttr({kEth2, 4, 6}), entry);
  EXPECT_EQ(indexed(kEth2, 4), (std::vector<std::uint64_t>{6}));
  EXPECT_EQ(engine->mrpGetAttribute(true), entry) << "found, not created twice";
}

TEST_F(MrpSmDatabaseTest, AddingAStoredAttributeResetsItsStatesAndValueInPlace) {
  auto stored = storedIs({kEth1, 4, 6});
  stored->applicantStateIs(MrpApplicantState::qa);
  stored->registrarStateIs(MrpRegistrarState::in);
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 1, 0x0102);
  currentIs(kEth1, 4, 6);
  EXPECT_EQ(engine->mrpAddAttrToDatabase(kEth1, 4, 6, true), stored);
  EXPECT_EQ(stored->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(stored->registrarState(), MrpRegistrarState::mt);
  EXPECT_EQ(storedOctets(*stored, 4), (Octets{6, 1, 1, 2}));
  EXPECT_TRUE(engine->attributeStore().addPendingAttrs().empty()) << "a stored attribute is not pending";
}

TEST_F(MrpSmDatabaseTest, DomainsDifferingOnlyInPriorityAndVidAreOneAttribute) {
  currentIs(kEth1, 4, 0);
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  const std::uint64_t first = engine->mrpGetTxAttributeKey();
  auto entry = engine->mrpAddAttrToDatabase(kEth1, 4, first, true);
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 5, 100);
  const std::uint64_t second = engine->mrpGetTxAttributeKey();
  EXPECT_EQ(second, 6u);
  EXPECT_EQ(find({kEth1, 4, second}, true), entry);
}

TEST_F(MrpSmDatabaseTest, CreateEntryMakesEveryMissingLevelAndReturnsAnExistingEntry) {
  auto entry = engine->createEntryInDatabase(kEth2, 2, 0x99);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->attributeKey(), 0x99u);
  auto db = records.mrpStatus->applicationDatabase(MrpApplication::msrp);
  ASSERT_TRUE(db);
  EXPECT_EQ(db->attrDatabase(kEth2)->intfTypeApplicant(2)->mrpAttribute(0x99), entry);
  EXPECT_EQ(engine->createEntryInDatabase(kEth2, 2, 0x99), entry);
  EXPECT_NE(engine->createEntryInDatabase(kEth2, 2, 0x9a), entry);
}

TEST_F(MrpSmDatabaseTest, DeletingTheCurrentAttributeQueuesItAndKeepsItStoredUntilTheReview) {
  auto stored = storedIs({kEth1, 3, 5});
  currentIs(kEth1, 3, 5);
  engine->mrpDeleteAttrFromDatabase();
  EXPECT_TRUE(engine->attributeStore().deletePendingAttr({kEth1, 3, 5}));
  EXPECT_EQ(engine->attributeStore().mrpIntfTypeApplicant(kEth1, 3)->mrpAttribute(5), stored);
  EXPECT_EQ(indexed(kEth1, 3), (std::vector<std::uint64_t>{5}));
}

TEST_F(MrpSmDatabaseTest, RxVectorOfAnAttributeNotStoredIsNotTheSame) {
  currentIs(kEth1, 4, 0);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr()) << "all-zero value, nothing stored";
}

TEST_F(MrpSmDatabaseTest, RxVectorSeesPendingAdditions) {
  mrpLib->msrpDomainVectorRx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  currentIs(kEth1, 4, 6);
  engine->mrpGetAttribute(true);
  EXPECT_TRUE(engine->mrpRxVectorSameAsDatabaseAttr());
}

TEST_F(MrpSmDatabaseTest, RxVectorOfATypeMsrpDoesNotHaveIsNotTheSame) {
  currentIs(kEth1, 5, 0);
  storedIs({kEth1, 5, 0});
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr());
}

// A Listener's stored value is its FirstValue, the StreamID: the declaration
// travels in the four-packed events and is neither stored nor compared.
TEST_F(MrpSmDatabaseTest, ListenerWithAnotherDeclarationIsTheSame) {
  mrpLib->msrpListenerVectorRx() = Mrp::MsrpListenerAttribute(0x42, Mrp::MsrpListenerEvent::ready);
  currentIs(kEth1, 3, 0x42);
  engine->mrpGetAttribute(true);
  EXPECT_TRUE(engine->mrpRxVectorSameAsDatabaseAttr());
  mrpLib->msrpListenerVectorRx().listenerEventIs(Mrp::MsrpListenerEvent::askingFailed);
  EXPECT_TRUE(engine->mrpRxVectorSameAsDatabaseAttr()) << "only the declaration changed";
  mrpLib->msrpListenerVectorRx().streamIdIs(0x43);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr()) << "another stream";
}

TEST_F(MrpSmDatabaseTest, ListenerFilledFromTheStoreTakesItsStreamAndKeepsTheTransmitDeclaration) {
  auto stored = storedIs({kEth1, 3, 0x0011223344556677ULL});
  storeOctets(*stored, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // StreamID
                        0x03, 0x00, 0x00, 0x00});                        // not part of the stored value
  mrpLib->msrpListenerVectorTx() = Mrp::MsrpListenerAttribute(0x99, Mrp::MsrpListenerEvent::ready);
  engine->mrpFillContextFromDatabase({kEth1, 3, 0x0011223344556677ULL});
  EXPECT_EQ(mrpLib->msrpListenerVectorTx(),
            Mrp::MsrpListenerAttribute(0x0011223344556677ULL, Mrp::MsrpListenerEvent::ready));
}

TEST_F(MrpSmDatabaseTest, FillingTheContextOfAnAbsentAttributeMakesItCurrentAndLeavesTransmitFields) {
  mrpLib->msrpTalkerAdvertiseTx().streamIdIs(0x1234);
  engine->mrpFillContextFromDatabase({kEth2, 1, 0x77});
  EXPECT_EQ(engine->parseContext()->intfId(), kEth2);
  EXPECT_EQ(engine->parseContext()->attributeType(), 1);
  EXPECT_EQ(engine->parseContext()->attributeKey(), 0x77u);
  EXPECT_EQ(mrpLib->msrpTalkerAdvertiseTx().streamId(), 0x1234u);
}

TEST_F(MrpSmDatabaseTest, FillingTheContextSeesPendingAdditionsAndIgnoresPendingDeletions) {
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  currentIs(kEth1, 4, 6);
  engine->mrpAddAttrToDatabase(kEth1, 4, 6, true);
  auto stored = storedIs({kEth1, 4, 7});
  storeOctets(*stored, {7, 1, 0, 1});
  currentIs(kEth1, 4, 7);
  engine->mrpDeleteAttrFromDatabase();

  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute();
  engine->mrpFillContextFromDatabase({kEth1, 4, 6});
  EXPECT_EQ(mrpLib->msrpDomainVectorTx(), Mrp::MsrpDomainAttribute(6, 3, 2));
  engine->mrpFillContextFromDatabase({kEth1, 4, 7});
  EXPECT_EQ(mrpLib->msrpDomainVectorTx(), Mrp::MsrpDomainAttribute(6, 3, 2)) << "pending deletion reads absent";
}

TEST_F(MrpSmDatabaseTest, IndexEntryIsCreatedWithItsFirstKeyAndRemovedWithItsLast) {
  engine->addToAttrIter(kEth1, 1, 20);
  engine->addToAttrIter(kEth1, 1, 10);
  engine->addToAttrIter(kEth1, 2, 10);
  EXPECT_EQ(indexed(kEth1, 1), (std::vector<std::uint64_t>{10, 20}));
  engine->removeFromAttrIter(kEth1, 1, 10);
  EXPECT_EQ(indexed(kEth1, 1), (std::vector<std::uint64_t>{20}));
  engine->removeFromAttrIter(kEth1, 1, 20);
  EXPECT_FALSE(engine->attributeStore().mrpAttrIter({kEth1, 1})) << "the last key takes the index with it";
  EXPECT_TRUE(engine->attributeStore().mrpAttrIter({kEth1, 2}));
  engine->removeFromAttrIter(kEth2, 1, 20);
  engine->removeFromAttrIter(kEth1, 2, 99);
  EXPECT_EQ(engine->attributeStore().mrpAttrIters().size(), 1u) << "removing what is not indexed changes nothing";
}

TEST_F(MrpSmDatabaseTest, ValueOfAnUnknownApplicationIsNeitherStoredNorCompared) {
  mrpLib->applicationIs(static_cast<MrpApplication>(7));
  mrpLib->msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 3, 2);
  currentIs(kEth1, 4, 6);
  Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(6);
  engine->mrpPopulateValueInDatabase(entry, true);
  EXPECT_EQ(storedOctets(*entry), Octets(MrpAttrDatabase::kValueOctets, 0));
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr());
}

// MVRP: the VLAN identifier is both the value and the key.
class MrpSmMvrpDatabaseTest : public DatabaseFixture {
 protected:
  MrpSmMvrpDatabaseTest() { engineIs(MrpApplication::mvrp); }
};

TEST_F(MrpSmMvrpDatabaseTest, RxVectorIsTheSameExactlyWhenItsVlanIsTheKey) {
  mrpLib->mvrpVlanVectorRx().vlanIdIs(100);
  currentIs(kEth1, 1, 100);
  EXPECT_TRUE(engine->mrpRxVectorSameAsDatabaseAttr()) << "compares with the key, not the store";
  currentIs(kEth1, 1, 101);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr());
  currentIs(kEth1, 2, 100);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr()) << "MVRP has type 1 only";
}

TEST_F(MrpSmMvrpDatabaseTest, TypeOutsideTheApplicationWritesAndFillsNothing) {
  mrpLib->mvrpVlanVectorTx().vlanIdIs(0x0123);
  currentIs(kEth1, 2, 0x0123);
  Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(0x0123);
  engine->mrpPopulateValueInDatabase(entry, true);
  EXPECT_EQ(storedOctets(*entry), Octets(MrpAttrDatabase::kValueOctets, 0));
  auto stored = storedIs({kEth1, 2, 5});
  storeOctets(*stored, {0, 5});
  engine->mrpFillContextFromDatabase({kEth1, 2, 5});
  EXPECT_EQ(mrpLib->mvrpVlanVectorTx().vlanId(), 0x0123);
}

// One value of each attribute type, with the octets the store holds for it:
// its FirstValue.
struct ValueCase {
  std::string name;
  MrpApplication application;
  std::uint8_t attributeType;
  std::function<void(MrpLib&, bool tx)> set;
  std::function<Octets(MrpLib&, bool tx)> octetsOf;
  Octets octets;
};

void PrintTo(const ValueCase& valueCase, std::ostream* out) { *out << valueCase.name; }

template <class Record>
ValueCase valueCase(std::string name, MrpApplication application, std::uint8_t attributeType,
                    Record& (MrpLib::*tx)(), Record& (MrpLib::*rx)(), Record value, Octets octets) {
  return {std::move(name), application, attributeType,
          [=](MrpLib& lib, bool isTx) { (lib.*(isTx ? tx : rx))() = value; },
          [=](MrpLib& lib, bool isTx) {
            const auto bytes = Mrp::valueBytes((lib.*(isTx ? tx : rx))());
            return Octets(bytes.begin(), bytes.end());
          },
          std::move(octets)};
}

const Mrp::MsrpTalkerAdvertiseAttribute kTalker(
    0x0011223344556677ULL, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 0), 2),
    Mrp::Tspec(1500, 1), Mrp::PriorityAndRank(3, 0), 0x01020304);
const Octets kTalkerOctets{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // StreamID
                           0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00,              // destination address
                           0x00, 0x02,                                      // VLAN
                           0x05, 0xdc, 0x00, 0x01,                          // MaxFrameSize, MaxIntervalFrames
                           0x60,                                            // priority 3, rank 0
                           0x01, 0x02, 0x03, 0x04};                         // AccumulatedLatency

Mrp::MsrpTalkerFailedAttribute talkerFailed() {
  Mrp::MsrpTalkerFailedAttribute failed;
  failed.talkerAdvertiseAttributeIs(kTalker);
  failed.failureInformationIs(Mrp::FailureInformation(0x8000001122334455ULL, 2));
  return failed;
}

Octets talkerFailedOctets() {
  Octets octets = kTalkerOctets;
  for (std::uint8_t o : {0x80, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55,  // failure bridge id
                         0x02})                                           // failure code
    octets.push_back(o);
  return octets;
}

const std::vector<ValueCase>& msrpValueCases() {
  static const std::vector<ValueCase> cases{
      valueCase("TalkerAdvertise", MrpApplication::msrp, 1, &MrpLib::msrpTalkerAdvertiseTx,
                &MrpLib::msrpTalkerAdvertiseRx, kTalker, kTalkerOctets),
      valueCase("TalkerFailed", MrpApplication::msrp, 2, &MrpLib::msrpTalkerFailedTx, &MrpLib::msrpTalkerFailedRx,
                talkerFailed(), talkerFailedOctets()),
      // The declaration (Ready) is not part of the FirstValue.
      valueCase("Listener", MrpApplication::msrp, 3, &MrpLib::msrpListenerVectorTx, &MrpLib::msrpListenerVectorRx,
                Mrp::MsrpListenerAttribute(0x0011223344556677ULL, Mrp::MsrpListenerEvent::ready),
                {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}),  // StreamID
      valueCase("Domain", MrpApplication::msrp, 4, &MrpLib::msrpDomainVectorTx, &MrpLib::msrpDomainVectorRx,
                Mrp::MsrpDomainAttribute(6, 3, 2), {0x06, 0x03, 0x00, 0x02}),
  };
  return cases;
}

std::vector<ValueCase> valueCases() {
  std::vector<ValueCase> cases = msrpValueCases();
  cases.push_back(valueCase("Vlan", MrpApplication::mvrp, 1, &MrpLib::mvrpVlanVectorTx, &MrpLib::mvrpVlanVectorRx,
                            Mrp::MvrpVlanAttribute(0x0123), {0x01, 0x23}));
  return cases;
}

class MrpSmValueTest : public DatabaseFixture, public ::testing::WithParamInterface<ValueCase> {
 protected:
  MrpSmValueTest() {
    engineIs(GetParam().application);
    currentIs(kEth1, GetParam().attributeType, 0x42);
  }
  // The leading octets of a value field, as many as the stored value has.
  Octets firstValueOf(MrpLib& lib, bool tx) const {
    Octets octets = GetParam().octetsOf(lib, tx);
    octets.resize(GetParam().octets.size());
    return octets;
  }
  Octets padded(Octets octets) const {
    octets.resize(MrpAttrDatabase::kValueOctets, 0);
    return octets;
  }
};

TEST_P(MrpSmValueTest, TransmitValueIsStoredInWireOrder) {
  GetParam().set(*mrpLib, true);
  Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(0x42);
  engine->mrpPopulateValueInDatabase(entry, true);
  EXPECT_EQ(storedOctets(*entry), padded(GetParam().octets));
}

TEST_P(MrpSmValueTest, ReceivedValueIsStoredInWireOrder) {
  GetParam().set(*mrpLib, false);
  Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(0x42);
  engine->mrpPopulateValueInDatabase(entry, true);
  EXPECT_EQ(storedOctets(*entry), padded({})) << "the transmit field is empty";
  engine->mrpPopulateValueInDatabase(entry, false);
  EXPECT_EQ(storedOctets(*entry), padded(GetParam().octets));
}

TEST_P(MrpSmValueTest, StoredValueIsDecodedIntoTheTransmitField) {
  auto stored = storedIs({kEth2, GetParam().attributeType, 0x43});
  storeOctets(*stored, GetParam().octets);
  engine->mrpFillContextFromDatabase({kEth2, GetParam().attributeType, 0x43});
  EXPECT_EQ(firstValueOf(*mrpLib, true), GetParam().octets);
  EXPECT_EQ(GetParam().octetsOf(*mrpLib, false), Octets(GetParam().octetsOf(*mrpLib, false).size(), 0))
      << "receive field untouched";
  EXPECT_EQ(engine->parseContext()->intfId(), kEth2);
  EXPECT_EQ(engine->parseContext()->attributeKey(), 0x43u);
}

// MVRP compares the key instead (MrpSmMvrpDatabaseTest).
using MrpSmMsrpValueTest = MrpSmValueTest;

TEST_P(MrpSmMsrpValueTest, RxVectorIsTheSameExactlyWhenEveryOctetIs) {
  GetParam().set(*mrpLib, false);
  auto stored = storedIs({kEth1, GetParam().attributeType, 0x42});
  storeOctets(*stored, GetParam().octets);
  EXPECT_TRUE(engine->mrpRxVectorSameAsDatabaseAttr());
  const std::size_t last = GetParam().octets.size() - 1;
  stored->attributeValueIs(ValueIndex(last), stored->attributeValue(ValueIndex(last)) ^ 1);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr()) << "last octet differs";
  stored->attributeValueIs(ValueIndex(last), stored->attributeValue(ValueIndex(last)) ^ 1);
  stored->attributeValueIs(ValueIndex(0), stored->attributeValue(ValueIndex(0)) ^ 0x80);
  EXPECT_FALSE(engine->mrpRxVectorSameAsDatabaseAttr()) << "first octet differs";
}

std::string caseName(const ::testing::TestParamInfo<ValueCase>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(AttributeTypes, MrpSmValueTest, ::testing::ValuesIn(valueCases()), caseName);
INSTANTIATE_TEST_SUITE_P(AttributeTypes, MrpSmMsrpValueTest, ::testing::ValuesIn(msrpValueCases()), caseName);

TEST_F(MrpSmDatabaseTest, StandbyEngineMadeActiveFindsTheStoredRegistrations) {
  engine = nullptr;
  auto db = records.mrpStatus->applicationDatabaseIs(MrpApplication::msrp);
  std::map<MrpAttribute, Ptr<MrpAttrDatabase>> stored;
  for (const MrpAttribute& a : {MrpAttribute{kEth1, 1, 30}, MrpAttribute{kEth1, 1, 10}, MrpAttribute{kEth1, 3, 7},
                                MrpAttribute{kEth2, 4, 6}}) {
    stored[a] = db->attrDatabaseIs(a.intfId)->intfTypeApplicantIs(a.attributeType)->mrpAttributeIs(a.attributeKey);
    stored[a]->registrarStateIs(MrpRegistrarState::in);
  }
  engine = engineNew(MrpApplication::msrp, true);
  engine->standbyModeIs(false);
  engine->handleStandbyMode();

  for (const auto& [a, entry] : stored) {
    EXPECT_EQ(find(a, false), entry) << a;
    EXPECT_EQ(find(a, true), entry) << a;
    EXPECT_EQ(entry->registrarState(), MrpRegistrarState::in) << "activation keeps the stored states";
  }
  EXPECT_EQ(indexed(kEth1, 1), (std::vector<std::uint64_t>{10, 30}));
  EXPECT_FALSE(find({kEth1, 1, 20}, true));

  // The rebuilt index takes part in deletions like one built by additions.
  currentIs(kEth2, 4, 6);
  engine->mrpDeleteAttrFromDatabase();
  clock->advance(0.1);
  EXPECT_FALSE(find({kEth2, 4, 6}, true));
  EXPECT_FALSE(engine->attributeStore().mrpAttrIter({kEth2, 4}));
}

}  // namespace
}  // namespace MrpTest
