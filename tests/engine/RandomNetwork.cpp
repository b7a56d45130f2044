#include "RandomNetwork.h"

#include "vxConnectorFields.h"
#include "vxHost.h"
#include "vxPagedImg.h"

#include <algorithm>
#include <sstream>

namespace vx::test {

namespace {

long long numPagesOf(const PlainPosition& extent, const PlainPosition& pages) {
  long long number = 1;
  for (std::size_t d = 0; d < 6; ++d) number *= (extent[d] + pages[d] - 1) / pages[d];
  return number;
}

}  // namespace

RandomNetwork::RandomNetwork(unsigned long long seed)
    : _dice(seed), _isLarge(_dice.once(40)), _isHolding(_dice.once(5)) {
  const int numNodes = static_cast<int>(_dice.number(1, _isLarge ? 5 : _isHolding ? 8 : 20));
  _nodes.resize(static_cast<std::size_t>(numNodes));
  for (int i = 0; i < numNodes; ++i) addNode(i);
  limitPages();
  setHostLimits();
}

RandomNetwork::~RandomNetwork() {
  // Modules may go in any order, before or after their host.
  const bool hostsFirst = _dice.once(2);
  const auto popHosts = [this] {
    for (; _numPushedHosts > 0; --_numPushedHosts) Host::popDefaultHost();
  };
  if (hostsFirst) popHosts();
  while (!_nodes.empty()) {
    std::swap(_nodes[static_cast<std::size_t>(_dice.number(0, static_cast<long long>(_nodes.size()) - 1))],
              _nodes.back());
    _nodes.pop_back();
  }
  popHosts();
}

PlainPosition RandomNetwork::randomExtent(long long maxVoxels) {
  PlainPosition extent{1, 1, 1, 1, 1, 1};
  long long numVoxels = 1;
  // Longer in some dimensions than in others, in random order.
  for (int i = 0; i < 6; ++i) {
    const auto d = static_cast<std::size_t>(_dice.number(0, 5));
    const long long longest = std::min(maxVoxels / (numVoxels / extent[d]), _dice.once(3) ? 40LL : 6LL);
    if (longest <= extent[d]) continue;
    numVoxels /= extent[d];
    extent[d] = _dice.number(1, longest);
    numVoxels *= extent[d];
  }
  return extent;
}

PlainPosition RandomNetwork::randomPageExtent() { return randomExtent(_isLarge ? 40000 : _dice.once(8) ? 2000 : 200); }

ModuleParameters RandomNetwork::randomParameters(ModuleKind kind) {
  ModuleParameters p;
  p.kind = kind;
  const auto fraction = [this] { return static_cast<double>(_dice.number(-24, 24)) / 8; };
  const auto type = [this] { return static_cast<int>(_dice.number(0, numPlainTypes - 1)); };
  p.extent = randomExtent(_isLarge ? 20000 : 1500);
  const auto firstDimension = static_cast<std::size_t>(_dice.number(0, 3));
  for (std::size_t d = 0; d < 6; ++d) {
    if (kind == ModuleKind::neighbourhood) {
      // No more than three dimensions, so that the window stays small.
      p.offset[d] = d >= firstDimension && d < firstDimension + 3 && _dice.once(2) ? 1 : 0;
    } else {
      p.offset[d] = _dice.once(2) ? _dice.number(-3, 3) : 0;
    }
  }
  if (kind == ModuleKind::neighbourhood && _dice.once(8)) p.offset = {7, 0, 0, 0, 0, 0};
  if (kind == ModuleKind::source || kind == ModuleKind::pageChange || kind == ModuleKind::crop || _dice.once(3)) {
    p.pageExtent = randomPageExtent();
  }
  p.holdsInputs = kind != ModuleKind::source && _dice.once(_isHolding ? 2 : 6);
  const bool hasOwnType = kind == ModuleKind::source || kind == ModuleKind::typeChange;
  if (hasOwnType || _dice.once(p.holdsInputs ? 2 : 6)) p.type = type();
  if (!p.holdsInputs && _dice.once(5)) p.inputType = type();
  if (_dice.once(4)) {
    p.inputScale = fraction();
    p.inputShift = fraction() * 4;
  }
  p.a = fraction();
  p.b = fraction();
  p.seed = _dice.number(0, 1000000);
  p.acceptsOpenInputs = _dice.once(3);
  p.clipsInputs = _dice.once(2);
  p.supportsThreads = !_dice.once(3);
  return p;
}

PlainPosition RandomNetwork::extentOf(int index) const {
  const Node& node = _nodes[static_cast<std::size_t>(index)];
  if (node.links.empty() || node.parameters.kind == ModuleKind::crop) return node.parameters.extent;
  return node.links[0].node < 0 ? PlainPosition{1, 1, 1, 1, 1, 1} : extentOf(node.links[0].node);
}

void RandomNetwork::limitPages() {
  for (std::size_t i = 0; i < _nodes.size(); ++i) {
    PlainPosition& pages = _nodes[i].parameters.pageExtent;
    if (pages[0] == 0) continue;
    const PlainPosition extent = extentOf(static_cast<int>(i));
    const PlainPosition former = pages;
    long long numVoxels = 1;
    long long numPagedVoxels = 1;
    for (std::size_t d = 0; d < 6; ++d) {
      numVoxels *= extent[d];
      numPagedVoxels *= (extent[d] + pages[d] - 1) / pages[d] * pages[d];
    }
    for (std::size_t d = 0; d < 6 && numPagedVoxels > std::max(6 * numVoxels, 400LL); ++d) {
      if (pages[d] <= extent[d]) continue;
      numPagedVoxels = numPagedVoxels / pages[d] * extent[d];
      pages[d] = extent[d];
    }
    for (std::size_t d = 0; numPagesOf(extent, pages) > 300; d = (d + 1) % 6) {
      pages[d] = std::min(2 * pages[d], std::max(extent[d], pages[d]));
    }
    if (pages == former) continue;
    _nodes[i].module->setParameters(_nodes[i].parameters);
    forget(static_cast<int>(i));
  }
}

RandomNetwork::Link RandomNetwork::randomLink(int node) {
  Link link;
  if (node == 0 || _dice.once(20)) return link;
  // Mostly a recent module, so that chains become long; where inputs are held, often one that others have as well.
  const int farthest = _dice.once(_isHolding ? 1 : 3) ? 0 : std::max(0, node - 3);
  link.node = static_cast<int>(_dice.number(farthest, node - 1));
  link.outIndex =
      static_cast<int>(_dice.number(0, _nodes[static_cast<std::size_t>(link.node)].parameters.numOutputs() - 1));
  return link;
}

void RandomNetwork::addNode(int index) {
  const bool isSource = index == 0 || _dice.once(_isHolding ? 20 : 6);
  const bool isBlend = _isHolding && _dice.once(2);
  const auto kind = isSource  ? ModuleKind::source
                    : isBlend ? ModuleKind::blend
                              : static_cast<ModuleKind>(_dice.number(1, numModuleKinds - 1));
  Node& node = _nodes[static_cast<std::size_t>(index)];
  node.parameters = randomParameters(kind);
  node.module = makeModule(node.parameters);
  node.links.resize(static_cast<std::size_t>(node.parameters.numInputs()));
  node.outputs.resize(static_cast<std::size_t>(node.parameters.numOutputs()));
  for (int i = 0; i < node.parameters.numInputs(); ++i) connect(index, i, randomLink(index));
}

void RandomNetwork::connect(int node, int input, const Link& link) {
  Node& target = _nodes[static_cast<std::size_t>(node)];
  target.links[static_cast<std::size_t>(input)] = link;
  if (link.node < 0) {
    disconnectInput(*target.module, input);
  } else {
    connectInput(*target.module, input, *_nodes[static_cast<std::size_t>(link.node)].module, link.outIndex,
                 _dice.once(8));
  }
}

void RandomNetwork::forget(int index) {
  for (Output& output : _nodes[static_cast<std::size_t>(index)].outputs) output.isKnown = false;
  for (int i = index + 1; i < static_cast<int>(_nodes.size()); ++i) {
    const auto& links = _nodes[static_cast<std::size_t>(i)].links;
    if (std::any_of(links.begin(), links.end(), [=](const Link& link) { return link.node == index; })) forget(i);
  }
}

const RandomNetwork::Output& RandomNetwork::evaluate(int index, int outIndex) {
  Node& node = _nodes[static_cast<std::size_t>(index)];
  Output& output = node.outputs[static_cast<std::size_t>(outIndex)];
  if (output.isKnown) return output;
  output.isKnown = true;
  output.code = 0;
  // One voxel of 0.
  static const PlainImage placeholder({1, 1, 1, 1, 1, 1}, plainUint8);
  std::vector<const PlainImage*> inputs;
  for (const Link& link : node.links) {
    const Output* const source = link.node < 0 ? nullptr : &evaluate(link.node, link.outIndex);
    if (source && source->code == 0) {
      inputs.push_back(&source->image);
    } else if (node.parameters.acceptsOpenInputs) {
      inputs.push_back(&placeholder);
    } else {
      output.code = source ? VX_IMAGE_NOT_CALCULATED : VX_OPEN_NETWORK;
      return output;
    }
  }
  output.image = calculate(node.parameters, outIndex, inputs);
  return output;
}

std::string RandomNetwork::description() const {
  std::ostringstream text;
  for (std::size_t i = 0; i < _nodes.size(); ++i) {
    text << "  module " << i << ": " << _nodes[i].parameters.toText();
    for (const Link& link : _nodes[i].links) text << " <- " << link.node << "." << link.outIndex;
    text << "\n";
  }
  for (const std::string& line : _history) text << "  " << line << "\n";
  return text.str();
}

}  // namespace vx::test
