
#include "tests/support/objects.h"
#include "tests/support/rows.h"
#include "tests/support/thrown.h"
#include "tests/support/world_test.h"
#include "util/thread/clock.h"

using namespace vesk;
using testsupport::objectOf;
using testsupport::rowsOf;
using testsupport::thrownBy;

namespace {

constexpr char kExtended[] =
    "<GUID=33221100554477668899aabbccddeeff>;<SID=010500000000000515000000010000000200000003000000"
    "50040000>;CN=Jo Doe,DC=example,DC=com";

template <class Dumped>
std::string dumped(const Dumped& what) {
  std::ostringstream out;
  what.dump(out);
  return out.str();
}

std::string attributesOf(ADObject object) {
  std::string all;
  for (const auto& entry : object.attributes()) all += dumped(entry.second);
  return all;
}

// A separate object over an owned copy of the blob, not yet read.
ADObject unread(ADObject object) {
  ADSerializer* blob = object.getSerialized();
  char* data = static_cast<char*>(malloc(blob->size()));
  memcpy(data, blob->data(), blob->size());
  return ADObject(blob->size(), data, true, nullptr);
}

TEST(Attribute, EachWayToWriteMarksTheChange) {
#define WRITE(...) [](ADAttribute& a) { __VA_ARGS__; }
  const std::pair<void (*)(ADAttribute&), const char*> rows[] = {
      {WRITE(a = "x"), "n(d):x\n"},
      {WRITE(a = true), "n(d):TRUE\n"},
      {WRITE(a = 0), "n(d):0\n"},
      {WRITE(a = 4294967295u), "n(d):4294967295\n"},
      {WRITE(a = -7L), "n(d):-7\n"},
      {WRITE(a = Int64("-9000000000")), "n(d):-9000000000\n"},
      {WRITE(a = ADAttribute::Values{"a", "b"}), "n(d):a,b\n"},
      {WRITE(a += std::string("x")), "n(d):old,x\n"},
      {WRITE(a += a), "n(d):old,old\n"},
      {WRITE(a = a.front()), "n(d):old\n"},
      {WRITE(a += std::string()), "n(s):old\n"},
      {WRITE(a += ADAttribute::Values()), "n(s):old\n"},
      {WRITE(a = ""), "n(s):\n"},
      {WRITE(a.addVal("", true, true)), "n(ds):old,\n"},
      {WRITE(a.addVal(5, false, false)), "n:old,5\n"},
      {WRITE(a.addVal(false, false, true)), "n(s):old,FALSE\n"},
      {WRITE(a.addCList(" a,, b\t,\n,c", true, false)), "n(d):old,a,b,c\n"},
      {WRITE(a.addCList(" , ", true, false)), "n(s):old\n"},
      {WRITE(a = "\x01z"), "n(d):017a\n"},
  };
  for (const auto& [write, text] : rows) {
    ADAttribute attribute("n");
    attribute.addVal("old", false, true);
    write(attribute);
    EXPECT_EQ(dumped(attribute), text);
  }
}

TEST(Attribute, ReadersConvertTheFirstValue) {
  ADAttribute attribute("Some");
  const std::string failure = "SystemException 0 ADAttribute 'Some' is empty";
  EXPECT_EQ(thrownBy([&] { std::string text = attribute; }), failure);
  EXPECT_EQ(thrownBy([&] { attribute.toUInt(); }), failure);
  EXPECT_EQ(thrownBy([&] { attribute.toTime(); }), failure);
  attribute = "tRuE";
  EXPECT_TRUE(attribute.toBool());
  attribute = "0x10";
  EXPECT_EQ(attribute.toUInt(), 16u);
  EXPECT_EQ(attribute.toInt(), 0);
  attribute = "-12";
  EXPECT_EQ(attribute.toInt(), -12);
  EXPECT_EQ(attribute.toUnixTime(), -12);
  attribute = "4294967297";
  EXPECT_EQ(attribute.toUInt(), 4294967295u);  // never wraps around to root
  EXPECT_EQ(attribute.toInt64(), Int64("4294967297"));
  EXPECT_EQ(attribute.toUnixTime(), 1);
}

TEST(Attribute, DirectoryTimesAreUtcInAnyZone) {
  const auto bad = rowsOf<2>("lrpc/model/rows.txt", "bad times");
  ADAttribute time("when");
  for (const char* zone : {"UTC", "EST5EDT,M3.2.0,M11.1.0", "<+0530>-5:30", "Europe/London"}) {
    setenv("TZ", zone, 1);
    time = "20200704120000.0Z";
    EXPECT_EQ(time.toTime(), 1593864000) << zone;
    time = "19700101000000.0Z";
    EXPECT_EQ(time.toTime(), 0) << zone;  // 01:00 in London
    for (const auto& [value, shown] : bad) {
      time = value;
      EXPECT_EQ(thrownBy([&] { time.toTime(); }),
                "SystemException 0 ADAttribute 'when' is not a UTC time, time value is " + shown + " ");
    }
  }
  unsetenv("TZ");
}

TEST(Object, ANullHandleThrows) {
  ADObject null;
  const std::string failure = "SystemException 0 Null adobject";
  EXPECT_EQ(thrownBy([&] { null["x"]; }), failure);
  EXPECT_EQ(thrownBy([&] { null.clone(); }), failure);
  EXPECT_EQ(thrownBy([&] { ADObject("x").merge(null); }), failure);
  EXPECT_EQ(null.toString(), "(null ADObject)");
  EXPECT_EQ(dumped(null), "null ADObject\n");
}

TEST(Object, AnExtendedNameIsTakenApartAndPutTogether) {
  ADObject object{std::string(kExtended)};
  EXPECT_EQ(attributesOf(object), "_SID(d):S-1-5-21-1-2-3-1104\n_dn(d):CN=Jo Doe,DC=example,DC=com\n");
  EXPECT_EQ(object.guid().toString(), "33221100554477668899aabbccddeeff");
  EXPECT_EQ(object.toString(), kExtended);
  EXPECT_NEAR(object.acquired(), dayclock::now(), 5);

  ADObject plain(std::string("<no extended name>"));
  EXPECT_TRUE(plain.sid().isNull());
  EXPECT_EQ(attributesOf(plain), "_dn(d):<no extended name>\n");
  plain[AD_SID] = std::string("\x01\x01\0\0\0\0\0\x05\x12\0\0\0", 12);
  EXPECT_EQ(plain.sid().toMSString(), "S-1-5-18");
  plain.setSID("S-1-1-0");
  EXPECT_EQ(plain.sid().toMSString(), "S-1-1-0");
  EXPECT_EQ(std::string(plain[VESK_SID]), "S-1-1-0");
  plain.erase("_dn");
  EXPECT_EQ(thrownBy([&] { plain.toString(); }), "SystemException 0 ADAttribute '_dn' is empty");
}

TEST(Object, CopiesShareAndClonesDoNot) {
  ADObject object = unread(ADObject(std::string(kExtended)));
  object["cn"] = "old";
  object.setIndexed(true);
  ADObject shared = object, separate = object.clone();
  shared["cn"] = "new";
  shared.setAcquired(1);
  EXPECT_EQ(std::string(object["cn"]), "new");
  EXPECT_EQ(object.serializer()->getAcquired(), 1);
  shared.setUsn(Int64("7"));
  EXPECT_EQ(std::string(object.serializer()->getUsn()), "7");
  EXPECT_NE(separate.acquired(), 1);
  EXPECT_NE(dumped(separate).find("IsIndexed: Yes"), std::string::npos);
  EXPECT_NE(separate.serializer()->data(), object.serializer()->data());
  EXPECT_EQ(std::string(separate["cn"]), "old");
  EXPECT_EQ(std::string(separate["_dn"]), "CN=Jo Doe,DC=example,DC=com");
}

TEST(Object, ReadsAnAttributeWhenItIsFirstAskedFor) {
  ADObject object = unread(objectOf("CN=x", "cn=Jo;sn=Doe"));
  const ADSerializer* blob = object.serializer();
  EXPECT_TRUE(object.attributeExists("sn", true));
  EXPECT_TRUE(object.attributes().empty());
  EXPECT_EQ(std::string(object["cn"]), "Jo");
  EXPECT_EQ(object.attributes().size(), 1u);
  EXPECT_EQ(object.getSerialized(), blob);  // clean: not rebuilt

  object["cn"].clear();  // the map takes precedence over the blob
  EXPECT_FALSE(object.attributeExists("cn", true));
  EXPECT_TRUE(object.attributeExists("cn", false));
  EXPECT_EQ(object.erase("cn"), 1u);
  EXPECT_FALSE(object.attributeExists("cn", false));
  EXPECT_EQ(object.erase("_dn"), 1u);  // only in the blob
  EXPECT_EQ(object.erase("_dn"), 0u);

  object["missing"];
  EXPECT_FALSE(object.serializedClean());
  EXPECT_TRUE(object.getSerialized()->exists("missing", false));
  EXPECT_TRUE(object.serializedClean());
  EXPECT_EQ(std::string(object["sn"]), "Doe");
}

TEST(Object, CopyTakesTheNamedAttributes) {
  const char* const names[] = {"mail", "telephoneNumber", nullptr};
  ADObject copy = unread(objectOf(kExtended, "Mail=jo@example.com;cn=Jo;_server=dc1")).copy(names);
  EXPECT_EQ(attributesOf(copy),
            "_SID(d):S-1-5-21-1-2-3-1104\n_dn(d):CN=Jo Doe,DC=example,DC=com\n_server(d):dc1\n"
            "mail(d):jo@example.com\n");
  EXPECT_EQ(copy.toString(), kExtended);
}

TEST(Object, MergeAddsWhatIsMissing) {
  ADObject object = objectOf("CN=x", "cn=Jo;_AttrHash=b;_AttrHash=d;_AttrHash=a");
  ADObject lazy = unread(objectOf("CN=y", "cn=Jim;sn=Doe;_AttrHash=c;_AttrHash=b"));
  object.merge(lazy);
  EXPECT_EQ(attributesOf(object), "_AttrHash(d):a,b,c,d\n_dn(d):CN=x\ncn(d):Jo\nsn(d):Doe\n");
}

TEST(Object, ComparisonsAreTheSameOnBothPaths) {
  for (int fast : {1, 0}) {
    GOFAST1 = fast;
    ADObject a("CN=x"), b("CN=x"), empty;
    EXPECT_TRUE(a.compareAttribute(b, "cn", true));
    EXPECT_FALSE(a.compareAttribute(b, "cn", false));
    EXPECT_EQ(a.attributeExists("cn", false), fast == 1);
    EXPECT_TRUE(a.adUsnChanged(b));
    a["cn"] = "Jo";
    EXPECT_FALSE(a.compareAttribute(b, "cn", true));
    b["cn"] = "Jo";
    EXPECT_TRUE(a.compareAttribute(b, "cn", false));
    a[AD_USN_CHANGED] = b[AD_USN_CHANGED] = "12345678901";
    EXPECT_FALSE(a.adUsnChanged(b));
    EXPECT_EQ(std::string(a.getSerialized()->getUsn()), "12345678901");
    EXPECT_EQ(a.usn(), a.getSerialized()->getUsn());
    EXPECT_TRUE(a.adUsnChanged(empty));
  }
  GOFAST1 = 1;
  EXPECT_TRUE(ADObject::usnChanged("1", "2"));
}

TEST(Object, NoticesAChangedExtension) {
  ADObject object("CN=x"), other("CN=x"), empty;
  EXPECT_TRUE(object.extUsnChanged(empty, false));
  EXPECT_FALSE(object.extUsnChanged(other, false));
  other[VESK_OBJ_EXTENDED] = ADAttribute::Values{"g1", "g2"};
  object["_extendedObjUSNg1"] = other["_extendedObjUSNg1"] = "1";
  EXPECT_TRUE(object.extUsnChanged(other, false));
  object["_extendedObjUSNg2"] = other["_extendedObjUSNg2"] = "2";
  EXPECT_FALSE(object.extUsnChanged(other, false));

  ADObject extension{std::string(kExtended)};
  extension[AD_USN_CHANGED] = "9";
  EXPECT_TRUE(object.extUsnChanged(extension, true));
  object["_extendedObjUSN33221100554477668899aabbccddeeff"] = "9";
  EXPECT_FALSE(object.extUsnChanged(extension, true));
}

TEST(Object, TheCategoryFollowsFromSchemaAndNames) {
  for (const auto& [schema, dn, displayName, category] : rowsOf<4>("lrpc/model/rows.txt", "categories")) {
    ADObject object = objectOf(dn, "objectCategory=" + schema + ";displayName=" + displayName);
    EXPECT_EQ(object.category(), category) << schema << dn;
    object["objectCategory"] = "CN=Other,CN=Schema";
    EXPECT_EQ(object.category(), category.empty() ? "Other" : category) << "remembered";
    object.erase("_objectCategory");
    object.erase("_dn");
    EXPECT_EQ(thrownBy([&] { object.category(); }), "SystemException 0 ADAttribute '_dn' is empty");
    object.erase("objectCategory");
    EXPECT_EQ(object.category(), "");
  }
}

TEST(Object, ADumpShowsWhatIsReadAndWhatIsNot) {
  setenv("TZ", "UTC", 1);
  tzset();
  ADObject object{std::string(kExtended)};
  object.setAcquired(0);
  object.setIndexed(true);
  const std::string head =
      "ADObject: <GUID=33221100554477668899aabbccddeeff>\nAcquired: Thu Jan  1 00:00:00 1970\nIsIndexed: "
      "Yes\n";
  EXPECT_EQ(dumped(object),
            head + "Deserialized data:\n_SID(d):S-1-5-21-1-2-3-1104\n_dn(d):CN=Jo Doe,DC=example,DC=com\n");
  ADObject lazy = unread(object);
  EXPECT_EQ(dumped(lazy).find(head + "Serialized Data\n  ADOHeader:\n    m_acquired: 0\n"), 0u);

  ADObjectList list;
  EXPECT_TRUE(list.isNull() && list.empty() && list.begin() == list.end());
  list.push_back(ADObject());
  ADObjectList shared = list;
  shared.push_back(ADObject());
  EXPECT_EQ(dumped(list), "1:null ADObject\n2:null ADObject\n");
  unsetenv("TZ");
}

using ObjectLog = testsupport::WorldTest;

TEST_F(ObjectLog, BadTimesAndMissingAttributesAreLogged) {
  ADObject object = objectOf("CN=x", "good=20200704120000.0Z;unix=1593864000;when=soon");
  EXPECT_EQ(object.getTime("good", 7), 1593864000);
  EXPECT_EQ(object.getUnixTime("unix", 7), 1593864000);
  EXPECT_EQ(object.getTime("absent", 7), 7);
  EXPECT_FALSE(object.attributeExists("absent", false));
  EXPECT_EQ(object.getTime("when", 7), 7);
  EXPECT_TRUE(isLogged("Failed to convert attribute when to time. Error: ADAttribute 'when' is not a UTC"));
  ADObject lazy = unread(object);
  lazy["cn"];
  lazy.getSerialized();
  EXPECT_TRUE(isLogged("deserializing to getSerialized"));
  const char* const names[] = {"sn", nullptr};
  lazy.copy(names);
  EXPECT_TRUE(isLogged("copy attribute sn not found"));
}

TEST_F(ObjectLog, AFailedAssertionIsAlsoWrittenToItsFileIfThatExists) {
  ADObject object("CN=x");
  EXPECT_TRUE(isLogged("new object: CN=x"));
  ADObjAssert(object, false, "no file", "here.cpp", 7);
  EXPECT_TRUE(isLogged("ADObjAssert: here.cpp:7 assertion no file failed, obj = ADObject: <GUID="));
  EXPECT_EQ(modeOf(paths::kAssertFile), 0u);

  const std::string old(200, 'o');
  put(paths::kAssertFile, old);
  ADObjAssert(object, true, "holds", "here.cpp", 8);
  EXPECT_EQ(get(paths::kAssertFile), old);
  ADObjAssert(object, false, "fails", "here.cpp", 9);
  const std::string dump = dumped(object);
  EXPECT_EQ(get(paths::kAssertFile), dump + old.substr(dump.size()));
  EXPECT_TRUE(isLogged("; _dn(d):CN=x; " + old.substr(dump.size())));
}

}  // namespace
