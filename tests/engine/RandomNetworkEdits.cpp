// What happens to a network between two requests.

#include "RandomNetwork.h"

#include "vxConnectorFields.h"
#include "vxHost.h"
#include "vxPagedImg.h"

#include <algorithm>

namespace vx::test {

void RandomNetwork::editSometimes() {
  for (long long i = _dice.number(0, 3); i > 0; --i) edit();
  limitPages();
  if (Host::getDefaultHost().getCache().getMaxCacheSizeKB() < 1000 && costWithoutCache() > 300) setHostLimits();
}

void RandomNetwork::edit() {
  switch (_dice.number(0, 7)) {
    case 0:
    case 1:
      return editParameters();
    case 2:
      return reconnect();
    case 3:
    case 4:
      return clearPages();
    case 5:
      return changeHost();
    default:
      return setHostLimits();
  }
}

void RandomNetwork::editParameters() {
  const int index = static_cast<int>(_dice.number(0, static_cast<long long>(_nodes.size()) - 1));
  Node& node = _nodes[static_cast<std::size_t>(index)];
  const ModuleParameters other = randomParameters(node.parameters.kind);
  ModuleParameters& p = node.parameters;
  switch (_dice.number(0, 7)) {
    case 0:
      p.extent = other.extent;
      break;
    case 1:
      p.offset = other.offset;
      break;
    case 2:
      p.pageExtent = other.pageExtent;
      break;
    case 3:
      p.type = other.type;
      break;
    case 4:
      p.inputType = other.inputType;
      break;
    case 5:
      p.supportsThreads = other.supportsThreads;
      break;
    case 6:
      p.a = other.a;
      p.seed = other.seed;
      break;
    default:
      p = other;
      break;
  }
  node.module->setParameters(p);
  forget(index);
  note("edited module " + std::to_string(index) + ": " + p.toText());
}

void RandomNetwork::reconnect() {
  const int index = static_cast<int>(_dice.number(0, static_cast<long long>(_nodes.size()) - 1));
  const Node& node = _nodes[static_cast<std::size_t>(index)];
  if (node.links.empty()) return;
  const int input = static_cast<int>(_dice.number(0, static_cast<long long>(node.links.size()) - 1));
  const Link link = randomLink(index);
  connect(index, input, link);
  forget(index);
  note("connected input " + std::to_string(input) + " of module " + std::to_string(index) + " to " +
       std::to_string(link.node) + "." + std::to_string(link.outIndex));
}

void RandomNetwork::clearPages() {
  const int index = static_cast<int>(_dice.number(0, static_cast<long long>(_nodes.size()) - 1));
  Node& node = _nodes[static_cast<std::size_t>(index)];
  const int outIndex = static_cast<int>(_dice.number(0, node.parameters.numOutputs() - 1));
  PagedImg& image = *node.module->getOutImg(outIndex);
  const long long what = _dice.number(0, 5);
  switch (what) {
    case 0:
      image.clearPageList();
      break;
    case 1:
      image.clearPageListAndMemoryImg();
      break;
    case 2:
      for (VXint64 id = 0; id < image.getNumPages(); ++id) {
        if (_dice.once(2)) image.removePage(id, _dice.once(2));
      }
      break;
    case 3:
      Host::getDefaultHost().getCache().clearCache();
      break;
    case 4: {
      // Nobody is told of this: a module that takes the placeholder would see that, and one that requests tiles itself
      // would determine properties, and so drop pages, while pages are calculated.
      const bool isSeen = std::any_of(_nodes.begin(), _nodes.end(), [=](const Node& other) {
        return (other.parameters.acceptsOpenInputs || other.parameters.kind == ModuleKind::inquiry) &&
               std::any_of(other.links.begin(), other.links.end(),
                           [=](const Link& link) { return link.node == index; });
      });
      if (isSeen) return;
      node.module->clearOutImg(outIndex);
      break;
    }
    default:
      node.module->getOutField(outIndex)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
      break;
  }
  forgetCounts();
  note("cleared pages of " + std::to_string(index) + "." + std::to_string(outIndex) + " in way " +
       std::to_string(what));
}

void RandomNetwork::changeHost() {
  if (_numPushedHosts > 0 && _dice.once(2)) {
    Host::popDefaultHost();
    --_numPushedHosts;
    note("popped a host");
  } else if (_numPushedHosts < 2) {
    Host::pushDefaultHost();
    ++_numPushedHosts;
    note("pushed a host");
  }
  // The pages of a host go with it.
  forgetCounts();
  setHostLimits();
}

void RandomNetwork::setHostLimits() {
  Host& host = Host::getDefaultHost();
  host.setMaxNumThreads(static_cast<VXuint32>(_dice.number(1, 8)));
  // Without a cache a page is calculated on every path that leads to it.
  static constexpr VXuint64 limits[] = {0, 1, 4, 20, 100, 1000, 50000, 50000, 50000};
  const long long smallest = costWithoutCache() > 300 ? 5 : 0;
  host.getCache().setMaxCacheSizeKB(limits[_dice.number(smallest, std::size(limits) - 1)]);
  host.getCache().setMemoryOptimizationLevel(smallest == 0 && _dice.once(6) ? static_cast<VXuint64>(_dice.number(1, 10))
                                                                            : 0);
  _isCacheAmple = host.getCache().getMaxCacheSizeKB() == 50000 && host.getCache().getMemoryOptimizationLevel() == 0;
  forgetCounts();
  note("host with " + std::to_string(host.getMaxNumThreads()) + " threads, " +
       std::to_string(host.getCache().getMaxCacheSizeKB()) + " KB, level " +
       std::to_string(host.getCache().getMemoryOptimizationLevel()));
}

// How many calculations a page may take: the paths that lead to it, a step of which takes several pages where a module
// looks further than to the same place.
long long RandomNetwork::costWithoutCache() const {
  std::vector<long long> costs;
  long long most = 0;
  for (const Node& node : _nodes) {
    const ModuleParameters& p = node.parameters;
    const bool isWhole = p.holdsInputs || p.kind == ModuleKind::mirror || p.kind == ModuleKind::inquiry;
    const bool isPointwise = p.pageExtent[0] == 0 && (p.kind == ModuleKind::inplace || p.kind == ModuleKind::blend ||
                                                      p.kind == ModuleKind::bypass || p.kind == ModuleKind::typeChange);
    const long long factor = isWhole ? 12 : isPointwise ? 1 : 3;
    long long cost = 1;
    for (const Link& link : node.links) {
      if (link.node >= 0) cost += factor * costs[static_cast<std::size_t>(link.node)];
    }
    costs.push_back(std::min(cost, 1000000LL));
    most = std::max(most, cost);
  }
  return most;
}

void RandomNetwork::forgetCounts() {
  for (const Node& node : _nodes) {
    if (node.module) node.module->resetCounts();
  }
}

}  // namespace vx::test
