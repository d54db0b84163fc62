// Sites that go two ways: from WEB1 straight to NEW1, and from WEB1 through the data database to NEW2.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "server_to_server_fixture.h"

namespace trelvin::test {

// What a client sees of a site: "class" and the explicit properties of each node, as "/ROOT/images Path" with
// its value and the value's kind. Paths begin behind the site's number.
using SiteContent = std::map<std::string, std::string>;

class RoundTrip : public ServerToServer {
 protected:
  // The window on WEB1 with those sites; both targets get the elements given.
  void openBoth(const std::string& sites, int from = 6, int to = 6);
  void openBothFtp(const std::string& sites);

  // All listed sites go both ways. Pairs of find and replace take part in the way into the database and not
  // in the way out, so that each value meets them once on either road.
  void sendBothWays();

  // What came of a site, by its number on the target.
  [[nodiscard]] static SiteContent straight(int number) { return contentOf("NEW1", number); }
  [[nodiscard]] static SiteContent throughDatabase(int number) { return contentOf("NEW2", number); }
  [[nodiscard]] static SiteContent contentOf(const std::string& server, int number);

  // Lines that tell of a failure, of the runs in their order.
  std::vector<std::string> straightFailures;
  std::vector<std::string> storeFailures;
  std::vector<std::string> rebuildFailures;

 private:
  void addThree(const std::string& source, const std::string& target);
  void list(int from, int to);
  static void selectAll();
};

// A site drawn by lot, of what both ways carry alike. Names, depth and values are what administrators have
// and worse.
class RandomSite {
 public:
  RandomSite(std::uint32_t seed, int number) : random_(seed), number_(number) {}
  [[nodiscard]] std::string elements();
  [[nodiscard]] std::string ftpElements();

  int nodes = 0;  // below the root

 private:
  struct Kinds {
    const std::vector<const char*>& texts;
    const std::vector<const char*>& numbers;
    const std::vector<const char*>& truths;
    const std::vector<const char*>& lists;
  };

  unsigned lot(unsigned count) { return static_cast<unsigned>(random_() % count); }
  std::string textValue();
  std::string listValue();
  void addSome(Properties& properties, const Kinds& kinds);
  std::string nodesBelow(const std::string& path, const std::string& appRoot, int depth);
  std::string node(const std::string& path, const std::string& name, const std::string& appRoot, int depth);
  [[nodiscard]] Properties application(const std::string& path);

  std::mt19937 random_;
  int number_;
};

}  // namespace trelvin::test
