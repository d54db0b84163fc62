// The sites that whole runs are measured with, and how a run is measured.
#pragma once

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "core/err.h"
#include "platform/system_platform.h"

namespace trelvin {

constexpr int kDirectories = 10;

inline std::string element(const std::string& keyType, const std::string& location,
                           const std::string& properties) {
  return "<" + keyType + "\tLocation =\"" + location + "\"\n" + properties + "\t>\n</" + keyType + ">\n";
}

inline std::string directory(const std::string& location, const std::string& path) {
  return element(
      "IIsWebVirtualDir", location,
      "\t\tAccessFlags=\"AccessRead | AccessScript\"\n\t\tAppFriendlyName=\"App\"\n\t\tAppIsolated=\"2\"\n"
      "\t\tAppRoot=\"" +
          location +
          "\"\n\t\tAspBufferingOn=\"TRUE\"\n\t\tAspScriptTimeout=\"90\"\n\t\tAspSessionTimeout=\"20\"\n"
          "\t\tCacheISAPI=\"TRUE\"\n\t\tContentIndexed=\"TRUE\"\n\t\tDefaultDoc=\"default.asp\"\n"
          "\t\tHttpCustomHeaders=\"X-A: b\n\t\t\tX-C: d\"\n\t\tPath=\"" +
          path + "\"\n");
}

inline std::string site(int number) {
  const std::string location = "/LM/W3SVC/" + std::to_string(number);
  const std::string path = "D:\\web\\" + std::to_string(number);
  std::string text = element(
      "IIsWebServer", location,
      "\t\tAllowKeepAlive=\"TRUE\"\n\t\tConnectionTimeout=\"120\"\n\t\tDefaultDoc=\"a.htm,b.asp\"\n"
      "\t\tLogFileDirectory=\"D:\\logs\"\n\t\tLogFilePeriod=\"1\"\n\t\tMaxConnections=\"100\"\n"
      "\t\tNTAuthenticationProviders=\"NTLM\"\n\t\tSecureBindings=\":443:\"\n\t\tServerAutoStart=\"TRUE\"\n"
      "\t\tServerBindings=\":80:www.example.com\"\n\t\tServerComment=\"Site\"\n\t\tServerSize=\"1\"\n");
  text += directory(location + "/ROOT", path);
  for (int i = 0; i < kDirectories; ++i) {
    const std::string name = "v" + std::to_string(i);
    text += directory(location + "/ROOT/" + name, path + "\\" + name);
  }
  return text;
}

// A metabase file with so many sites, each with ten virtual directories and a dozen properties a node.
inline void writeMetabase(const std::filesystem::path& path, int sites) {
  std::ofstream file(path, std::ios::binary);
  file << "<?xml version =\"1.0\"?>\n<configuration>\n<MBProperty>\n"
       << element("IIS_ROOT", "/", "") << element("IIsComputer", "/LM", "")
       << element("IIsWebService", "/LM/W3SVC", "\t\tAppPoolId=\"DefaultAppPool\"\n");
  for (int number = 1; number <= sites; ++number) file << site(number);
  file << "</MBProperty>\n</configuration>\n";
}

// Time of the process and time on the wall; on a busy machine the former tells more.
struct Spent {
  double processor = 0;
  double wall = 0;
};

template <typename Work>
Spent spentOn(Work&& work) {
  const std::clock_t processorBegin = std::clock();
  const auto begin = std::chrono::steady_clock::now();
  work();
  return {static_cast<double>(std::clock() - processorBegin) / CLOCKS_PER_SEC,
          std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
}

// How time grows from one size to the next; 1 is linear.
inline double exponent(const Spent& smaller, const Spent& larger, double growth) {
  return std::log(larger.processor / smaller.processor) / std::log(growth);
}

// Measures and prints one size behind the other, and how the time of what is told by its member grows.
template <typename Times>
void measureGrowth(const std::vector<int>& sizes, Times (*measure)(int), Spent Times::*work) {
  std::vector<Times> all;
  for (const int size : sizes) {
    all.push_back(measure(size));
    print(all.back());
    if (all.size() < 2) continue;
    const Times& smaller = all[all.size() - 2];
    const Times& larger = all.back();
    std::printf("  exponent      %8.2f\n",
                exponent(smaller.*work, larger.*work, static_cast<double>(larger.sites) / smaller.sites));
  }
}

inline void print(const char* what, const Spent& spent) {
  std::printf("  %-13s %8.3f s of the processor %8.3f s on the wall\n", what, spent.processor, spent.wall);
}

// The main routine of a program that measures runs of several sizes: they are its arguments, or else the
// given ones.
template <typename MeasureAll>
int measureSizes(int argc, char** argv, std::vector<int> sizes, MeasureAll&& measureAll) {
  useSystemPlatform(argc, argv, [](std::string_view line) { std::cerr << line << '\n'; });
  if (argc > 1) sizes.clear();
  for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  try {
    measureAll(sizes);
    return 0;
  } catch (const Failure& failure) {
    std::cerr << failure.description() << '\n';
    return 1;
  }
}

}  // namespace trelvin
