#include "ratioTable.h"

#include "vxStandardTypeTable.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace vx::bench {

namespace {

/// Names short enough for a column.
constexpr const char* shortNames[numStandardTypes] = {"int8",   "uint8", "int16",  "uint16",  "int32",
                                                      "uint32", "float", "double", "ldouble", "int64"};

double getSeconds(TimeKind kind) {
  timespec time;
  clock_gettime(kind == TimeKind::Processor ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

std::vector<double> bestTimes(const std::vector<std::function<void()>>& works, int turns, int calls, TimeKind kind) {
  std::vector<double> best(works.size(), 1e30);
  for (int turn = 0; turn < turns; ++turn) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      const double start = getSeconds(kind);
      for (int call = 0; call < calls; ++call) works[i]();
      const double seconds = (getSeconds(kind) - start) / calls;
      best[i] = std::min(best[i], seconds);
    }
  }
  return best;
}

void RatioTables::add(const std::string& title, int outType, int inType, double ratio) {
  for (Entry& entry : _entries) {
    if (entry.title == title && entry.outType == outType && entry.inType == inType) {
      entry.ratio = std::max(entry.ratio, ratio);
      return;
    }
  }
  _entries.push_back({title, outType, inType, ratio});
}

void RatioTables::print() const {
  std::vector<std::string> titles;
  for (const Entry& entry : _entries) {
    if (std::find(titles.begin(), titles.end(), entry.title) == titles.end()) titles.push_back(entry.title);
  }
  for (const std::string& title : titles) {
    std::vector<const Entry*> entries;
    bool rows[numStandardTypes] = {};
    bool columns[numStandardTypes] = {};
    for (const Entry& entry : _entries) {
      if (entry.title != title) continue;
      entries.push_back(&entry);
      rows[entry.outType] = columns[entry.inType] = true;
    }
    std::printf("\n%s\n%8s", title.c_str(), "out\\in");
    for (int in = 0; in < numStandardTypes; ++in) {
      if (columns[in]) std::printf("%8s", shortNames[in]);
    }
    std::printf("\n");
    for (int out = 0; out < numStandardTypes; ++out) {
      if (!rows[out]) continue;
      std::printf("%8s", shortNames[out]);
      for (int in = 0; in < numStandardTypes; ++in) {
        const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry* entry) {
          return entry->outType == out && entry->inType == in;
        });
        if (found != entries.end()) {
          std::printf("%8.2f", (*found)->ratio);
        } else if (columns[in]) {
          std::printf("%8s", "");
        }
      }
      std::printf("\n");
    }
    std::sort(entries.begin(), entries.end(), [](const Entry* a, const Entry* b) { return a->ratio < b->ratio; });
    std::printf("least %.2f, median %.2f; below 0.8:", entries.front()->ratio, entries[entries.size() / 2]->ratio);
    for (const Entry* entry : entries) {
      if (entry->ratio < 0.8) {
        std::printf(" %s<-%s (%.2f)", shortNames[entry->outType], shortNames[entry->inType], entry->ratio);
      }
    }
    std::printf("\n");
  }
}

}  // namespace vx::bench
