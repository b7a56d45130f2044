#include "vxRuntime.h"

#include "vxBase.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(Base, nullptr)

Base::~Base() = default;
char* Base::getPersistentState() const { return nullptr; }
void Base::setPersistentState(const char*) {}
void Base::clearPersistentState(char* state) const { VXFree(state); }
void Base::addStateToTree(TreeNode*) const {}
void Base::readStateFromTree(TreeNode*) {}

bool RuntimeType::isDerivedFrom(const RuntimeType* other) const noexcept {
  if (!other) return false;
  for (const RuntimeType* type = this; type; type = type->_parent) {
    if (type == other) return true;
  }
  return false;
}

namespace {

constexpr char rootName[] = "Base";

// The root stands in the table from the start, before any library registers a class.
__attribute__((constructor(101))) void registerRoot() { Base::initClass(nullptr, nullptr); }

bool isNoName(const char* name) { return !name || *name == '\0'; }

}  // namespace

// Records are kept when their class is removed: classes and children may still point to them. A class that comes
// back gets its old record, so a library that is loaded again and again takes no more memory.
struct RuntimeTable {
  struct Record {
    std::string name;
    std::string dllName;
    std::unique_ptr<RuntimeType> type;
  };

  std::mutex mutex;  // guards all members; a leaf: nothing else is locked while it is held
  std::unordered_map<std::string, Record> records;
  std::vector<RuntimeType*> registered;  // in the order of their registration
  std::size_t cursor = 0;                // index of the entry that getNextEntry() gives
  std::string recentDllName;

  static RuntimeTable& instance();

  void clear();

  RuntimeType* find(const char* className) {
    if (isNoName(className)) return nullptr;
    const auto record = records.find(className);
    if (record == records.end()) return nullptr;
    RuntimeType* const type = record->second.type.get();
    return type && isRegistered(type) ? type : nullptr;
  }

  bool isRegistered(const RuntimeType* type) const;
  RuntimeType* add(const char* className, const char* dllName, const RuntimeType* parent, RuntimeType::CreateCB create);
  void remove(RuntimeType* type);
  template <class Predicate>
  void removeIf(Predicate predicate);
};

// The members of an entry are its table's.
struct RuntimeTypeLayout {
  static RuntimeType* make() { return new RuntimeType; }
  static bool isRegistered(const RuntimeType& type) { return type._isRegistered; }
  static void enlist(RuntimeType& type, const char* name, const char* dllName, const RuntimeType* parent,
                     RuntimeType::CreateCB create) {
    type._name = name;
    type._dllName = dllName;
    type._parent = parent;
    type._createCB = create;
    type._isRegistered = true;
  }
  // The code of the creation function may be unmapped soon.
  static void retire(RuntimeType& type) {
    type._isRegistered = false;
    type._createCB = nullptr;
  }
};

// The table outlives the static objects of every library and host, whatever was loaded first: objects that they hold
// still count themselves and ask for their class.
RuntimeTable& RuntimeTable::instance() {
  alignas(RuntimeTable) static unsigned char memory[sizeof(RuntimeTable)];
  static RuntimeTable& table = *::new (memory) RuntimeTable;
  return table;
}

void RuntimeTable::clear() {
  const std::lock_guard lock(mutex);
  decltype(registered)().swap(registered);
  decltype(records)().swap(records);
  std::string().swap(recentDllName);
}

namespace {

// This runs behind the destructors of all static objects, and when the base layer is unloaded.
__attribute__((destructor(101))) void releaseTable() { RuntimeTable::instance().clear(); }

}  // namespace

bool RuntimeTable::isRegistered(const RuntimeType* type) const { return RuntimeTypeLayout::isRegistered(*type); }

RuntimeType* RuntimeTable::add(const char* className, const char* dllName, const RuntimeType* parent,
                               RuntimeType::CreateCB create) {
  registered.reserve(registered.size() + 1);  // so that nothing below leaves the table half changed
  Record& record = records[className];
  if (!record.type) record.type.reset(RuntimeTypeLayout::make());
  record.dllName = dllName ? dllName : recentDllName.c_str();
  record.name = className;
  RuntimeType& type = *record.type;
  RuntimeTypeLayout::enlist(type, record.name.c_str(), record.dllName.c_str(), parent, create);
  registered.push_back(&type);
  return &type;
}

void RuntimeTable::remove(RuntimeType* type) {
  RuntimeTypeLayout::retire(*type);
  const auto place = std::find(registered.begin(), registered.end(), type);
  if (static_cast<std::size_t>(place - registered.begin()) < cursor) --cursor;
  registered.erase(place);
}

template <class Predicate>
void RuntimeTable::removeIf(Predicate predicate) {
  for (std::size_t i = registered.size(); i-- > 0;) {
    if (predicate(*registered[i])) remove(registered[i]);
  }
}

const RuntimeType* Runtime::initType(const RuntimeType* oldType, const char* parentName, const char* dllName,
                                     const char* className, void* (*createCB)(void)) {
  if (isNoName(className)) {
    report(VX_ERROR, "Runtime::initType()", VX_BAD_PARAMETER, "A class without a name can't be registered.");
    return nullptr;
  }
  RuntimeTable& table = RuntimeTable::instance();
  bool isParentUnknown = false;
  const RuntimeType* type = nullptr;
  try {
    const std::lock_guard lock(table.mutex);
    if (oldType && table.isRegistered(oldType)) return oldType;
    if (!table.find(rootName)) table.add(rootName, "", nullptr, nullptr);
    if (const RuntimeType* const registered = table.find(className)) return registered;
    const RuntimeType* const parent = table.find(parentName);
    isParentUnknown = !parent && !isNoName(parentName) && std::strcmp(parentName, "NULL") != 0;
    type = table.add(className, dllName, parent, createCB);
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_NO_MEMORY);
    return nullptr;
  }
  if (isParentUnknown) {
    reportComposed(VX_ERROR, "Runtime::initType()", VX_BAD_PARAMETER, [=] {
      return std::string("The parent class '") + parentName + "' of class '" + className +
             "' is not registered. Registering the class as a root.";
    });
  }
  return type;
}

void Runtime::destroyType(const char* className) {
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  if (RuntimeType* const type = table.find(className)) table.remove(type);
}

void Runtime::destroy() {
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  table.removeIf([](const RuntimeType&) { return true; });
}

void Runtime::destroyRuntimeTypesOfDll(const char* dllName) {
  if (!dllName) return;
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  table.removeIf([dllName](const RuntimeType& type) { return std::strcmp(type.getDllName(), dllName) == 0; });
}

const RuntimeType* Runtime::fromName(const char* className) {
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  return table.find(className);
}

const RuntimeType* Runtime::getFirstEntry() {
  RuntimeTable& table = RuntimeTable::instance();
  {
    const std::lock_guard lock(table.mutex);
    table.cursor = 0;
  }
  return getNextEntry();
}

const RuntimeType* Runtime::getNextEntry() {
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  return table.cursor < table.registered.size() ? table.registered[table.cursor++] : nullptr;
}

void Runtime::setRecentlyLoadedDllName(const char* dllName) {
  RuntimeTable& table = RuntimeTable::instance();
  try {
    const std::lock_guard lock(table.mutex);
    table.recentDllName = dllName ? dllName : "";
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_NO_MEMORY);
  }
}

long long Runtime::getNumInstancesDependentOnDll(const char* dllName) {
  if (!dllName) return -1;
  RuntimeTable& table = RuntimeTable::instance();
  const std::lock_guard lock(table.mutex);
  bool isKnown = false;
  long long numInstances = 0;
  for (const RuntimeType* type : table.registered) {
    if (std::strcmp(type->getDllName(), dllName) != 0) continue;
    isKnown = true;
    numInstances += __atomic_load_n(&type->instanceCounter(), __ATOMIC_RELAXED);
  }
  return isKnown ? numInstances : -1;
}

const char* runtimeTypeName(const RuntimeType* type, const char* className, const char* file, int line) {
  constexpr const char* unknown = "<Name of Uninitialized Type>";
  if (type) return type->getName();
  reportComposed(VX_ERROR, CallLabel(className, file, line), VX_OBJECT_NOT_INITIALIZED, [className] {
    return std::string(
               "Returning '<Name of Uninitialized Type>'instead of real type name since type is not "
               "initialized. Did you forget to call '") +
           className + "::initClass' during library initialization?";
  });
  return unknown;
}

long& runtimeTypeCounter(const RuntimeType* type, const char* className, const char* file, int line) {
  if (!type) {
    report(VX_FATAL, CallLabel(className, file, line), VX_OBJECT_NOT_INITIALIZED,
           "Cannot determine counter reference.");
    throwFatal(VX_BAD_POINTER, SourcePosition(file, line));
  }
  return type->instanceCounter();
}

}  // namespace vx
