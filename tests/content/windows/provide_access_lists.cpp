#include "content/content_whole.h"
#include "fakes/fake_access_lists.h"

namespace trelvin::test {

bool provideAccessLists(const std::filesystem::path& /*probe*/) {
  platform().createNtfsControl = [lists = std::make_shared<AccessLists>()] {
    return lists->makeControl("NTFSCtl");
  };
  return true;
}

}  // namespace trelvin::test
