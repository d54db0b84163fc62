#include <random>

#include "server_fixture.h"

namespace trelvin::test {

// Everything that a client can see of a metabase, as text.
class RandomChanges : public MetabaseFileTest {
 protected:
  static std::string shown(const Value& value) {
    switch (value.varType()) {
      case kVarList: {
        std::string text = "[";
        for (const Value& item : value.list()) text += shown(item) + ";";
        return text + "]";
      }
      case kVarObject:
        return value.object()->typeName();
      case kVarBytes:
        return std::to_string(value.bytes().size()) + " bytes";
      default:
        return value.toText();
    }
  }

  static void describe(Metabase& metabase, const NodeHandle& node, std::string& text) {
    text += node->adsPath() + " " + node->className() + "\n";
    for (const std::string& name : metabase.getObject(node->schema())->optionalProperties()) {
      for (const std::string& path : node->getDataPaths(name, Value())) {
        if (path == node->adsPath()) text += "  " + name + "=" + shown(node->get(name)) + "\n";
      }
    }
    node->forEachChild([&](const NodeHandle& child) { describe(metabase, child, text); });
  }

  static std::string described(Metabase& metabase) {
    std::string text;
    describe(metabase, metabase.getObject("IIS://Web1"), text);
    return text;
  }

  // One change of a kind and at a place drawn by lot. Many are refused; that is as good as any other outcome.
  static void changeSomething(Metabase& metabase, std::mt19937& random) {
    const auto lot = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    const std::string names[] = {"1", "2", "10", "77", "Ärger", "a&b"};
    std::string path = "IIS://Web1/W3SVC";
    if (lot(4) != 0) path += "/" + names[lot(4)];
    if (lot(2) != 0) path += "/ROOT";
    if (lot(3) == 0) path += "/" + names[lot(6)];
    const std::string classes[] = {"IIsWebServer", "IIsWebVirtualDir", "IIsWebDirectory", "IIsObject"};
    const std::string properties[] = {"ServerComment",  "Path",           "AccessScript",
                                      "MaxConnections", "ServerBindings", "KeyType",
                                      "AuthFlags",      "SSLCertHash",    "HttpErrors"};
    const Value values[] = {"text <&> \"q\"",
                            5,
                            true,
                            Value::List{":80:", ":81:"},
                            "IIsWebDirectory",
                            Value::Bytes{1, 2},
                            "IIsWebVirtualDir",
                            Value::List{},
                            -1};
    static_cast<void>(failureOf([&] {
      const NodeHandle node = metabase.getObject(path);
      switch (lot(8)) {
        case 0:
          node->create(classes[lot(4)], names[lot(6)])->setInfo();
          break;
        case 1:
          node->create("IIsWebVirtualDir", "ROOT")->setInfo();
          break;
        case 2:
          node->deleteChild("", names[lot(6)]);
          break;
        case 3:
          node->appCreate3(static_cast<std::int32_t>(lot(3)), names[lot(6)], lot(2) == 0);
          break;
        default:
          node->put(properties[lot(9)], values[lot(9)]);
          node->setInfo();
      }
    }));
  }
};

TEST_F(RandomChanges, ReadTheSameFromTheJournalAndFromTheFileWrittenAnew) {
  for (unsigned round = 0; round < 12; ++round) {
    std::mt19937 random(round);
    writeFile(round % 2 == 0 ? sampleMetabase() : replaceAll(sampleMetabase(), "\n", "\r\n"));
    for (int session = 0; session < 4; ++session) {
      for (int i = 0; i < 40; ++i) changeSomething(metabase(), random);
      const std::string inMemory = described(metabase());
      EXPECT_EQ(described(*makeMetabase()), inMemory) << "from the journal, seed " << round;
      closeMetabase();
      ASSERT_FALSE(hasJournal()) << "seed " << round;
      EXPECT_EQ(described(*makeMetabase()), inMemory) << "from the file, seed " << round;
    }
  }
}

}  // namespace trelvin::test
