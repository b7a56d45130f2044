#include "vxTreeNode.h"

#include "vxTraceBuffer.h"
#include "vxUtilsAPI.h"

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(TreeNode, "NULL")

namespace {

// Fails as an operation that a format leaves out. The result is for the compiler only.
template <class Result = void>
Result missing(const char* operation) {
  if (VXAlwaysTrue) throw TreeNodeException(TreeNodeException::MissingImplementation, operation);
  return Result();
}

// Reads a number through the form of the widest number of its kind. Nothing is assigned if that throws.
template <class Wide, class Number>
void readThrough(TreeNode& node, Number& value, const char* name) {
  Wide wide = 0;
  node.readChild(wide, name);
  value = static_cast<Number>(wide);
}

}  // namespace

TreeNode::TreeNode() : _lastReadChildName(nullptr), _readNextIndex(-1), _isRootNode(false) {}

TreeNode::TreeNode(ConstructionMode) : TreeNode() { _isRootNode = true; }

TreeNode::~TreeNode() {
  const TraceFrame trace("source/vxTreeNode:TreeNode::~TreeNode()");
  for (TreeNode* child : _children) delete child;
}

void TreeNode::_appendNewChild(TreeNode& child) { _children.push_back(&child); }

void TreeNode::writeToFile(const char*) { missing("writeToFile"); }
void TreeNode::readFromFile(const char*) { missing("readFromFile"); }
void TreeNode::writeToString(char*&) { missing("writeToString"); }
void TreeNode::readFromString(const char*) { missing("readFromString"); }

// The forms by type: ADD and READ of what a format has to store, ADD_AS and READ_AS of what passes through another
// form.
#define VX_ADD(type, text) \
  void TreeNode::addChild(type, const char*) { missing("addChild(" text ")"); }
#define VX_ADD_AS(wide, type) \
  void TreeNode::addChild(type value, const char* name) { addChild(static_cast<wide>(value), name); }
#define VX_READ(type, text) \
  void TreeNode::readChild(type&, const char*) { missing("readChild(" text "&)"); }
#define VX_READ_AS(wide, type) \
  void TreeNode::readChild(type& value, const char* name) { readThrough<wide>(*this, value, name); }

TreeNode* TreeNode::addChild(const char*) { return missing<TreeNode*>("TreeNode* addChild()"); }
void TreeNode::addChild(const Base* const, const char*, bool) { missing("addChild(Base*)"); }
void TreeNode::addChild(const void* const, unsigned int, const char*) { missing("addChild(void*)"); }
VX_ADD(const SubImgBoxf&, "SubImgBoxf")
VX_ADD(const TSubImgBox<VXint64>&, "SubImgBox")
VX_ADD(const Tmat4<double>&, "mat4")
VX_ADD(const Tmat3<double>&, "mat3")
VX_ADD(const TVector<VXint64>&, "Vector")
VX_ADD(const Tvec6<double>&, "vec6")
VX_ADD(const Tvec4<double>&, "vec4")
VX_ADD(const Tvec3<double>&, "vec3")
VX_ADD(const Tvec2<double>&, "vec2")
VX_ADD(const char* const, "const char* const")
VX_ADD(long double, "long double")
VX_ADD_AS(long double, double)
VX_ADD_AS(long double, float)
VX_ADD(VXint64, "VXint64")
VX_ADD(VXuint64, "VXuint64")
VX_ADD(long, "long")
VX_ADD(unsigned long, "unsigned long")
VX_ADD_AS(long, int)
VX_ADD_AS(unsigned long, unsigned int)
VX_ADD_AS(long, short)
VX_ADD_AS(unsigned long, unsigned short)
VX_ADD_AS(long, char)
VX_ADD_AS(unsigned long, unsigned char)
VX_ADD_AS(unsigned long, bool)

bool TreeNode::hasChild(const char*) { return missing<bool>("TreeNode* hasChild()"); }
VX_READ(char*, "char*")
VX_READ(TreeNode*, "TreeNode*")
VX_READ(Base, "Base")
VX_READ(Base*, "Base*")
void TreeNode::readChild(void*&, unsigned long&, const char*) { missing("readChild(char*&)"); }
VX_READ(SubImgBoxf, "SubImgBoxf")
VX_READ(TSubImgBox<VXint64>, "SubImgBox")
VX_READ(Tmat4<double>, "mat4")
VX_READ(Tmat3<double>, "mat3")
VX_READ(TVector<VXint64>, "Vector")
VX_READ(Tvec6<double>, "vec6")
VX_READ(Tvec4<double>, "vec4")
VX_READ(Tvec3<double>, "vec3")
VX_READ(Tvec2<double>, "vec2")
VX_READ(long double, "long double")
VX_READ_AS(long double, double)
VX_READ_AS(long double, float)
VX_READ(VXuint64, "VXuint64")
VX_READ(VXint64, "VXint64")
VX_READ(unsigned long, "unsigned long")
VX_READ(long, "long")
VX_READ_AS(unsigned long, unsigned int)
VX_READ_AS(long, int)
VX_READ_AS(unsigned long, unsigned short)
VX_READ_AS(long, short)
VX_READ_AS(unsigned long, unsigned char)
VX_READ_AS(long, char)
VX_READ_AS(long, bool)

#undef VX_ADD
#undef VX_ADD_AS
#undef VX_READ
#undef VX_READ_AS

void TreeNode::deleteString(char*) const { missing("deleteString(char*)"); }

TreeNode* TreeNode::readContainerChild(const char* name) {
  TreeNode* child = nullptr;
  readChild(child, name);
  return child;
}

Base* TreeNode::readBaseChild(const char* name) {
  Base* object = nullptr;
  readChild(object, name);
  return object;
}

void TreeNode::setVersion(const char*, int) { missing("setVersion()"); }
int TreeNode::getVersion(const char*) { return missing<int>("getVersion()"); }
char* TreeNode::correctName(const char*) const { return missing<char*>("correctName()"); }
bool TreeNode::isCorrectName(const char*) const { return missing<bool>("isCorrectName()"); }

}  // namespace vx
