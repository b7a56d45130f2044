#include "vxTreeNodeException.h"

#include "vxStringConversion.h"
#include "vxTraceBuffer.h"

#include <string>

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(TreeNodeException, "NULL")

const char* const TreeNodeException::_stdErrorMsg[36] = {
#define VX_LIST_TREE_NODE_ERROR(name, code, text) text,
    VX_FOR_EACH_TREE_NODE_ERROR(VX_LIST_TREE_NODE_ERROR)
#undef VX_LIST_TREE_NODE_ERROR
        nullptr,
};

TreeNodeException::TreeNodeException(int errCode, const char* additionalInfo) noexcept
    : _errCode(errCode), _additionalInfo(additionalInfo) {}

TreeNodeException::~TreeNodeException() = default;

char* TreeNodeException::getMessage() const {
  const TraceFrame trace("source/vxTreeNode:TreeNodeException::getMessage()");
  constexpr int numCodes = sizeof _stdErrorMsg / sizeof *_stdErrorMsg;
  const bool isInTable = _errCode >= 0 && _errCode < numCodes;
  std::string message = "TreeNodeException occurred (code " + std::to_string(_errCode) + "): ";
  if (isInTable && _stdErrorMsg[_errCode]) message += _stdErrorMsg[_errCode];
  if (_additionalInfo) {
    if (isInTable) message += " - ";
    message += _additionalInfo;
  } else if (!isInTable) {
    message += "No additional information available.";
  }
  return StringConversion::newString(message);
}

}  // namespace vx
