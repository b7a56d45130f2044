// A random network of test modules beside its plain model: requests of tiles are compared with whole images.

#ifndef VX_TESTS_RANDOM_NETWORK_H
#define VX_TESTS_RANDOM_NETWORK_H

#include "NetworkModules.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vx::test {

/// Random numbers, the same for one seed everywhere.
class Dice {
 public:
  explicit Dice(unsigned long long seed) : _engine(seed) {}
  /// A number between two, inclusively.
  long long number(long long low, long long high) {
    return low + static_cast<long long>(_engine() % static_cast<unsigned long long>(high - low + 1));
  }
  /// True once in n times.
  bool once(long long n) { return number(1, n) == 1; }

 private:
  std::mt19937_64 _engine;
};

/// A network and its model. Everything follows from the seed.
class RandomNetwork {
 public:
  explicit RandomNetwork(unsigned long long seed);
  ~RandomNetwork();
  RandomNetwork(const RandomNetwork&) = delete;
  RandomNetwork& operator=(const RandomNetwork&) = delete;

  /// Changes something up to three times: a parameter, a connection, pages, the cache, the number of threads or the
  /// host.
  void editSometimes();
  /// Requests a random tile of a random output and compares. \return what was wrong, or an empty text.
  std::string requestTile();
  /// The number of tiles that were delivered.
  int numDelivered() const { return _numDelivered; }
  /// The network, and what was done to it.
  std::string description() const;

 private:
  struct Link {
    int node = -1;
    int outIndex = 0;
  };
  // What the model says of an output.
  struct Output {
    bool isKnown = false;
    int code = 0;
    PlainImage image;
  };
  struct Node {
    ModuleParameters parameters;
    std::unique_ptr<NetworkModule> module;
    std::vector<Link> links;
    std::vector<Output> outputs;
  };
  struct Tile;

  // Making of a network.
  ModuleParameters randomParameters(ModuleKind kind);
  PlainPosition randomExtent(long long maxVoxels);
  PlainPosition randomPageExtent();
  Link randomLink(int node);
  /// Cuts pages that reach far past their images, and joins very many small ones: the test would take its time with
  /// nothing but that.
  void limitPages();
  PlainPosition extentOf(int node) const;
  void addNode(int index);
  void connect(int node, int input, const Link& link);

  // Changes.
  void edit();
  void editParameters();
  void reconnect();
  void clearPages();
  void changeHost();
  void setHostLimits();
  void forgetCounts();
  long long costWithoutCache() const;

  // The model.
  const Output& evaluate(int node, int outIndex);
  void forget(int node);

  // Requests.
  Tile randomTile(int node, int outIndex, const PlainImage* image);
  int deliver(Tile& tile);
  std::string compare(const Tile& tile, const PlainImage& image);
  std::string checkState(bool isCacheFlushed);

  void note(const std::string& text) { _history.push_back(text); }

  Dice _dice;
  bool _isLarge;    // few modules with pages of which a request needs several groups
  bool _isHolding;  // many modules that hold their inputs, and share them
  std::vector<Node> _nodes;
  int _numPushedHosts = 0;
  bool _isCacheAmple = true;
  int _numDelivered = 0;
  std::vector<std::string> _history;
};

}  // namespace vx::test

#endif
