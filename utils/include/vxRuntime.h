/// \file vxRuntime.h
/// The table of run-time types, and the class members that every run-time typed class repeats.

#ifndef VX_RUNTIME_H
#define VX_RUNTIME_H

#include "vxRuntimeType.h"

#include <type_traits>

namespace vx {

/// The table of run-time types: classes by name, with their parents and libraries. All functions are static.
///
/// "Base" stands in the table as a root from the start. Registration, removal and iteration belong to start-up,
/// shutdown and library load, on one thread at a time; each single call is safe from any thread.
class VX_EXPORT Runtime {
 public:
  Runtime() = delete;

  /// Registers a class. A class that is registered already is left as it is, whatever the other arguments say.
  /// \param oldType the entry that the class holds from an earlier registration, or null.
  /// \param parentName parent class. Null, "" and "NULL" make a root. Any other name that isn't registered is
  ///        reported as an error with ::VX_BAD_PARAMETER and makes a root as well.
  /// \param dllName library of the class; null for the one given to setRecentlyLoadedDllName().
  /// \param className the name; null or empty is reported as an error with ::VX_BAD_PARAMETER.
  /// \param createCB makes an instance; null for an abstract class.
  /// \return the entry; null only without a name or without memory.
  static const RuntimeType* initType(const RuntimeType* oldType, const char* parentName, const char* dllName,
                                     const char* className, void* (*createCB)(void));

  /// Removes one class. An unknown name and null are ignored.
  static void destroyType(const char* className);

  /// Removes all classes, "Base" too; the next registration brings that back.
  static void destroy();

  /// Removes the classes of one library. An unknown name and null are ignored.
  static void destroyRuntimeTypesOfDll(const char* dllName);

  /// \return the class of that name, or null. Upper and lower case differ.
  static const RuntimeType* fromName(const char* className);

  /// Begins an iteration over all classes, in the order of their registration. There is one cursor for the process.
  /// \return the first class, or null.
  static const RuntimeType* getFirstEntry();
  /// \return the next class, or null at the end. A class that is removed during an iteration is passed over.
  static const RuntimeType* getNextEntry();

  /// Names the library that classes registered from now on belong to. The text is copied; null counts as "".
  static void setRecentlyLoadedDllName(const char* dllName);

  /// \return the number of live instances of all classes of a library; -1 if it has none registered, or for null.
  static long long getNumInstancesDependentOnDll(const char* dllName);
};

/// \return the name for `getTypeIdName()` of a class: that of its type. Without a type it reports the missing
///         registration and gives "<Name of Uninitialized Type>".
/// \param type the class's entry, or null. \param className label of the report. \param file,line its position.
VX_EXPORT const char* runtimeTypeName(const RuntimeType* type, const char* className, const char* file, int line);

/// \return the counter for `typeInstanceCounter()` of a class.
/// \throw int ::VX_BAD_POINTER without a type, after two fatal reports.
/// \param type the class's entry, or null. \param className label of the report. \param file,line its position.
VX_EXPORT long& runtimeTypeCounter(const RuntimeType* type, const char* className, const char* file, int line);

/// An instance of `X` that was made by name: it counts itself among the live instances of its class.
template <class X>
class CountedInstance final : public X {
 public:
  CountedInstance() : _countedType(X::getClassTypeId()) {
    if (_countedType) __atomic_add_fetch(&_countedType->instanceCounter(), 1L, __ATOMIC_RELAXED);
  }
  ~CountedInstance() {
    if (_countedType) __atomic_sub_fetch(&_countedType->instanceCounter(), 1L, __ATOMIC_RELAXED);
  }
  CountedInstance(const CountedInstance&) = delete;
  CountedInstance& operator=(const CountedInstance&) = delete;

 private:
  const RuntimeType* _countedType;
};

/// Makes an instance of `X` for a `createCB`. \return the instance, which the caller owns. One of a final class isn't
///         counted.
template <class X>
X* createInstance() {
  if constexpr (std::is_final_v<X>) {
    return new X();
  } else {
    return new CountedInstance<X>();
  }
}

}  // namespace vx

// The class members. A header macro stands where the three virtual functions have their place and leaves `public:`
// behind; a source macro stands once in a source, in the class's namespace. A root is a class whose base class, if
// any, has no run-time type.

/// What all header macros share. \param X the class. \param VIRTUAL,OVERRIDE the words in front of and behind the
/// virtual functions.
#define VX_CLASS_MEMBERS(X, VIRTUAL, OVERRIDE)                                                          \
 public:                                                                                                \
  /** Registers the class. Null arguments take the recently loaded library and the class's own name. */ \
  [[maybe_unused]] static void initClass(const char* dllName, const char* className);                   \
  /** Removes the class from the table of run-time types. */                                            \
  [[maybe_unused]] static void destroyClass();                                                          \
  /** \return the class's entry in the table of run-time types, null before initClass(). */             \
  [[maybe_unused]] static const ::vx::RuntimeType* getClassTypeId();                                    \
  /** \return the entry of the object's class, null before initClass(). */                              \
  VIRTUAL const ::vx::RuntimeType* getTypeId() const OVERRIDE;                                          \
  /** \return the name of the object's class; reports if it isn't registered. */                        \
  VIRTUAL const char* getTypeIdName() const OVERRIDE;                                                   \
  /** \return the counter of live instances. \throw int 41 if the class isn't registered. */            \
  VIRTUAL long& typeInstanceCounter() OVERRIDE;                                                         \
                                                                                                        \
 protected:                                                                                             \
  static const ::vx::RuntimeType* _classType; /**< The class's entry, null before initClass(). */       \
                                                                                                        \
 public:

/// The declaration of the function that makes an instance by name.
#define VX_CLASS_CREATOR                                                     \
  /** \return a new instance, which the caller owns and deletes as a base.*/ \
  [[maybe_unused]] static void* createCB();

/// Header of a root that can't be made by name.
#define VX_ABSTRACT_ROOT_CLASS_HEADER(X) VX_CLASS_MEMBERS(X, virtual, )
/// Header of a root that can be made by name.
#define VX_ROOT_CLASS_HEADER(X) VX_ABSTRACT_ROOT_CLASS_HEADER(X) VX_CLASS_CREATOR
/// Header of a derived class that can't be made by name.
#define VX_ABSTRACT_CLASS_HEADER(X) VX_CLASS_MEMBERS(X, , override)
/// Header of a derived class that can be made by name.
#define VX_CLASS_HEADER(X) VX_ABSTRACT_CLASS_HEADER(X) VX_CLASS_CREATOR

/// Definitions for every header macro. \param X the class. \param parentName text. \param creator a `createCB` or null.
#define VX_CLASS_DEFINITIONS(X, parentName, creator)                                                            \
  const ::vx::RuntimeType* X::_classType = nullptr;                                                             \
  void X::initClass(const char* dllName, const char* className) {                                               \
    _classType = ::vx::Runtime::initType(_classType, parentName, dllName, className ? className : #X, creator); \
  }                                                                                                             \
  void X::destroyClass() { ::vx::Runtime::destroyType(#X); }                                                    \
  const ::vx::RuntimeType* X::getClassTypeId() { return _classType; }                                           \
  const ::vx::RuntimeType* X::getTypeId() const { return _classType; }                                          \
  const char* X::getTypeIdName() const { return ::vx::runtimeTypeName(_classType, #X, __FILE__, __LINE__); }    \
  long& X::typeInstanceCounter() { return ::vx::runtimeTypeCounter(getTypeId(), #X, __FILE__, __LINE__); }

/// Definitions of a class that can't be made by name.
#define VX_ABSTRACT_CLASS_SOURCE(X, parentName) VX_CLASS_DEFINITIONS(X, parentName, nullptr)

/// Definitions of a class that can be made by name.
#define VX_CLASS_SOURCE(X, parentName)                      \
  void* X::createCB() { return ::vx::createInstance<X>(); } \
  VX_CLASS_DEFINITIONS(X, parentName, &X::createCB)

#endif
