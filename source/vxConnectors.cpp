#include "vxConnectors.h"

#include "vxErrorOutput.h"
#include "vxFieldsEngineHooks.h"
#include "vxTraceBuffer.h"

#include <algorithm>

namespace vx {

// Input ---------------------------------------------------------------------------------------------------------------

InputConnector::InputConnector(BaseOp& op, VXint64 index) : _op(op), _index(index), _link(nullptr) {}

InputConnector::InputConnector(BaseOp& op, VXint64 index, OutputConnector& output)
    : _op(op), _index(index), _link(nullptr) {
  connect(output);
}

InputConnector::InputConnector(const InputConnector& other) : _op(other._op), _index(other._index), _link(nullptr) {
  report(VX_FATAL, "InputConnector::InputConnector(const InputConnector &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of InputConnector is not supported.");
}

InputConnector& InputConnector::operator=(const InputConnector& /*other*/) {
  report(VX_FATAL, "InputConnector& InputConnector::operator=(const InputConnector &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of InputConnector is not supported.");
  return *this;
}

InputConnector::~InputConnector() { disconnect(); }

void InputConnector::connect(OutputConnector& output) {
  const TraceFrame trace("source/vxConnectors:InputConnector::connect()");
  disconnect();
  output._addLink(*this);
  _link = &output;  // after the output knows the input, so that both agree also when memory runs out
}

void InputConnector::disconnect() {
  const TraceFrame trace("source/vxConnectors:InputConnector::disconnect()");
  if (!_link) return;
  _link->_removeLink(*this);
  _link = nullptr;
}

VXint64 InputConnector::isValidConnection() const { return _link && _link->_isLink(*this) ? 1 : 0; }

// Output --------------------------------------------------------------------------------------------------------------

OutputConnector::OutputConnector(BaseOp& op, VXint64 index)
    : _op(op), _index(index), _pagedImg(fieldsEngineHooks().newPagedImg(op, index)) {}

OutputConnector::OutputConnector(const OutputConnector& other) : OutputConnector(other._op, other._index) {
  report(VX_FATAL, "OutputConnector::OutputConnector(const OutputConnector &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of OutputConnector is not supported.");
}

OutputConnector& OutputConnector::operator=(const OutputConnector& /*other*/) {
  report(VX_FATAL, "OutputConnector& OutputConnector::operator=(const OutputConnector &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of OutputConnector is not supported.");
  return *this;
}

OutputConnector::~OutputConnector() {
  const TraceFrame trace("source/vxConnectors:OutputConnector::~OutputConnector()");
  while (!_links.empty()) {
    const std::size_t count = _links.size();
    _links.front()->disconnect();
    // The entry was stale: that input is linked elsewhere.
    if (_links.size() >= count) _links.erase(_links.begin());
  }
  fieldsEngineHooks().deletePagedImg(_pagedImg);
}

InputConnector* OutputConnector::getLink(VXint64 index) const {
  const TraceFrame trace("source/vxConnectors:OutputConnector::getLink()");
  if (index >= 0 && index < getLinkNum()) return _links[static_cast<std::size_t>(index)];
  report(VX_ERROR, "OutputConnector::getLink()", VX_BAD_INDEX, "Invalid link index, returning NULL.");
  return nullptr;
}

void OutputConnector::_addLink(InputConnector& input) { _links.push_back(&input); }

VXint64 OutputConnector::_removeLink(InputConnector& input) {
  const auto found = std::find(_links.begin(), _links.end(), &input);
  if (found == _links.end()) return 0;
  _links.erase(found);
  return 1;
}

VXint64 OutputConnector::_isLink(const InputConnector& input) const {
  return std::find(_links.begin(), _links.end(), &input) != _links.end() ? 1 : 0;
}

}  // namespace vx
