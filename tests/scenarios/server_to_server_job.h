// The sample servers, and a job that moves sites from one of them to another.
#pragma once

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "program_run.h"

namespace trelvin::test {

using State = std::map<std::string, std::string>;  // each property that a node holds, by path and name

inline constexpr const char* kTargetFile = "network/NEW6/C$/WINDOWS/system32/inetsrv/MetaBase.xml";
inline constexpr const char* kTargetFolder = "network/NEW6/C$/WINDOWS/system32/inetsrv";

// A list's entries have "|" between them; objects are not looked into.
std::string textOf(const Value& value);

class ServerToServerJob : public ScenarioTest {
 protected:
  ServerToServerJob();

  // The sections of a job that name its sites.
  static std::string sectionsOf(std::initializer_list<const char*> sites);
  // Three sites of WEB5 to NEW6, with the pairs that such a move needs.
  void addWebJob(const std::map<std::string, std::string>& details = {});
  void expectThrough(const ProcessResult& result) const;

  // The servers as they are on the disk now.
  [[nodiscard]] std::unique_ptr<Metabase> reader() const;
  // The value in force at a node of the target.
  [[nodiscard]] std::string valueAt(const std::string& path, const std::string& property) const;
  [[nodiscard]] std::vector<std::string> sitesOf(const std::string& service) const;
  // Everything that the metabase of the target holds, as the program's own reader sees it.
  [[nodiscard]] State targetState() const;
};

}  // namespace trelvin::test
