/// \file vxAPI.h
/// The C interface of the library, for host applications in any language.
///
/// # The road of a host
///
/// Loading the library starts it. A host then checks that it fits (VXInit()), loads module libraries
/// (VXLoadLibrary()), makes modules by the names of their classes (VXCreateModuleFromName()), connects outputs to
/// inputs (VXFieldConnectFrom()), sets parameters as texts or numbers (VXFieldSetValue() and its siblings), asks
/// outputs for boxes of voxels (VXImageGetTile6D() and its siblings), and at the end deletes what it made and stops the
/// library (VXDestroy()).
///
/// # Conventions
///
/// **Handles** are plain pointers to the objects of the library. In C++ they are the classes themselves: a host that
/// includes their headers may pass a `vx::OutputConnectorField*` where a `vx::Field*` stands. In C they are opaque
/// structures. The handle of an image is the field of its output. A handle is good as long as its object: fields go
/// with their module, types with their library. A handle of an object that is gone can't be told from a good one and
/// must not be used.
///
/// **Ownership.** What goes in stays the caller's, unless a function says otherwise; texts are copied. Handles and
/// texts that come out stay the library's and are good until the object that they are of changes or goes, unless a
/// function says that the caller gives them back, and by which function. A constant text that is an answer for a
/// refused call is good forever.
///
/// **Refusals.** No bad argument does harm. A call that can't be done is refused: it is reported through the message
/// channel as an error, does nothing, and is answered as the function says; "refused" below always means that. The
/// codes of these reports:
///
/// | What is wrong | Code |
/// | --- | --- |
/// | a null pointer or an empty name where none may stand, a number out of range | 19, ::VX_BAD_PARAMETER |
/// | a null field, or an object that is no field at all | 7, ::VX_BAD_FIELD |
/// | a field whose class isn't registered | 39, ::VX_OBJECT_NOT_INITIALIZED |
/// | a field of another class than the function asks for; the report names both | 29, ::VX_BAD_OBJECT_TYPE |
/// | a field that only counts as one of that class, as a universal type field does as a float field | 19 |
/// | a call from inside of another that must not be interrupted by it | 22, ::VX_RECURSION_STOPPED |
/// | a call that would free what is being calculated | 14, ::VX_MISUSED_INTERFACE |
///
/// **Results.** A function that returns an error code returns 0 for success, else the code of the failure; it returns 7
/// for each of the bad fields above. The others return a neutral value after a refusal: null, 0, or what they say.
/// Outputs that a refused call doesn't write are left as they are, and that is so for every call refused for a null
/// output pointer.
///
/// **Exceptions** don't pass this interface. While exception handling is enabled, see VXEnableExceptionHandling(), an
/// exception that reaches an entry, from a module or for want of memory, is reported as fatal with code 1,
/// ::VX_UNKNOWN_EXCEPTION. The entry then returns 1 if it returns an error code, else 0, null or "". Nothing is rolled
/// back, but the library stays usable. While exception handling is disabled, exceptions of modules reach the host.
///
/// **From inside of callbacks** of the library (sensors, messages, notifications, progress, break checks) and from
/// module code all functions may be called, except that those of images and tiles refuse to run inside of one another,
/// and that calls which would free what is being calculated are refused while a calculation runs: VXClearPages() and
/// its siblings, VXClearCache(), VXPushState(), VXPopState(), VXDeleteModule(), VXUnLoadLibrary() and VXDestroy().
///
/// **Threads.** Unless a function says otherwise, all calls belong to one thread. Functions of voxel types, memory and
/// messages in the headers below this one may be called from any thread where they say so.
///
/// **Integers.** Positions, extents and indices are `int` here and widened to 64 bits by sign.

#ifndef VX_API_H
#define VX_API_H

#include "vxDataTypes.h"
#include "vxTypeInfos.h"
#include "vxTypes.h"
#include "vxUtilsAPI.h"

/// Version of the C interface that a caller is compiled against: the first argument of VXInit().
#define VX_C_API_MAJOR_VERSION 1
/// The second argument of VXInit().
#define VX_C_API_MINOR_VERSION 8
/// The third argument of VXInit().
#define VX_C_API_RELEASE_VERSION 68

// Handles ------------------------------------------------------------------------------------------------------------

#ifdef __cplusplus
namespace vx {
class Base;
class BaseOp;
class DicomTagList;
class Field;
class FieldSensor;
class ImagePropertyExtension;
class RuntimeType;
class SoNode;
}  // namespace vx
/// Declares the handle of a class.
#define VX_DECLARE_HANDLE(Class) typedef vx::Class VX##Class;
#else
#define VX_DECLARE_HANDLE(Class) typedef struct VX##Class VX##Class;
#endif

VX_DECLARE_HANDLE(Base)                    ///< An object with a run-time type. A module is one.
VX_DECLARE_HANDLE(BaseOp)                  ///< A module.
VX_DECLARE_HANDLE(DicomTagList)            ///< A list of DICOM tags, which counts its references.
VX_DECLARE_HANDLE(Field)                   ///< A field of any class.
VX_DECLARE_HANDLE(FieldSensor)             ///< What calls a function of the host when a field changes.
VX_DECLARE_HANDLE(ImagePropertyExtension)  ///< A property of an image that the library knows nothing about.
VX_DECLARE_HANDLE(RuntimeType)             ///< A registered class.
VX_DECLARE_HANDLE(SoNode)                  ///< A node of a scene of the host's.
#undef VX_DECLARE_HANDLE

// Start-up -----------------------------------------------------------------------------------------------------------

/// Checks that the caller fits this library, and starts the library if its load hasn't done so.
/// \param major,minor,release ::VX_C_API_MAJOR_VERSION and its siblings, see VXIsCAPILinkCompatible().
/// \return 1 if the caller fits and the library is started, else 0. An incompatible caller still gets a started
///         library.
VX_C_API int VXInit(int major, int minor, int release);

/// Takes the library down, see vx::destroyVX(). Failures are reported and change nothing here. Refused, with ::VX_ERROR
/// and nothing taken down, while a calculation runs. \return 1.
VX_C_API int VXDestroy(void);

// Libraries ----------------------------------------------------------------------------------------------------------
//
// A library is named without its prefix and suffix: for "Name", `libName.so` is tried before `Name` in each place.
// The places, in this order: the name as a path, and only so, if it holds a slash; each absolute folder of the
// environment variable VX_MODULE_PATH (folders with colons between); the folder of this library, and `vx/modules`
// beside it; the search of the system's loader, unless LD_LIBRARY_PATH has a component that means the current folder,
// which is never searched. Under elevated rights no environment variable counts.

/// Loads a library without reporting a failure of the load. Types that it registers meanwhile belong to `name`.
/// \param name null or empty is refused with an error, ::VX_BAD_PARAMETER.
/// \param handle takes the system's handle for VXUnLoadLibrary(), null after a failed load; may be null. A refused call
///        leaves it as it is.
/// \return 0, ::VX_BAD_PARAMETER or ::VX_LIBRARY_LOAD_FAILED.
VX_C_API VXErrorCode VXLoadLibraryWOErrorExt(const char* name, void** handle);

/// As VXLoadLibraryWOErrorExt(), without the handle.
VX_C_API VXErrorCode VXLoadLibraryWOError(const char* name);

/// Loads a library and reports an error if that fails; why it failed stands in that message. \return 1 on success, else
///         0.
VX_C_API int VXLoadLibrary(const char* name);

/// \return why the last load failed, file by file, "" after success; good until the next load. A file that is no whole
///         library of this system is never given to the system's loader.
VX_C_API const char* VXGetLoadLibraryErrorText(void);

/// Told of one place in which a library was looked for. \param userData as given to VXLoadLibraryExplained().
/// \param path file, or name that is left to the system's loader; good during the call. \param reason why the library
/// wasn't loaded from there, in the words of the system's loader or of the search; null if it was.
typedef void (*VXLibrarySearchCB)(void* userData, const char* path, const char* reason);
/// As VXLoadLibraryWOError(), and tells of each place in turn; the last one is that of the library if it was found.
/// Places that are not searched, such as a relative folder of VX_MODULE_PATH, are told with that reason.
/// \param name null or empty is refused with an error. \param userData handed to the callback. \param callback null is
///        refused with an error.
/// \return 0, ::VX_BAD_PARAMETER or ::VX_LIBRARY_LOAD_FAILED.
VX_C_API VXErrorCode VXLoadLibraryExplained(const char* name, void* userData, VXLibrarySearchCB callback);

/// Unloads a library and removes its types.
/// \param name as it was loaded; null or empty is refused with an error, ::VX_BAD_PARAMETER.
/// \param handle from VXLoadLibraryWOErrorExt().
/// \param errorText takes the system's text about the unload, on success too, which the caller frees by VXFree(); may
///        be null. A call that doesn't reach the unload leaves it as it is.
/// \param force non-zero: unload although instances of the library's classes live.
/// \return 0; ::VX_BAD_PARAMETER for a bad or unknown name; ::VX_LIBRARY_IN_USE if instances live and nothing was
///         done, and, with an error, while a calculation runs; ::VX_LIBRARY_UNLOAD_FAILED, also for the handle of this
///         library itself.
VX_C_API VXErrorCode VXUnLoadLibrary(const char* name, void* handle, char** errorText, int force);

/// \return 1 while VXUnLoadLibrary() unloads a library, else 0.
VX_C_API int VXIsCurrentlyUnloadingLibrary(void);

/// Stores a state for VXGetUnloadLibraryState(); nothing else looks at it.
/// \param state 0 or 1; another value is refused with an error. \return 0 or ::VX_BAD_PARAMETER.
VX_C_API VXErrorCode VXSetUnloadLibraryState(int state);
/// \return the state stored last, 0 at load.
VX_C_API int VXGetUnloadLibraryState(void);

// Types --------------------------------------------------------------------------------------------------------------
//
// The registered classes of the library and of the libraries that were loaded, fields and images among them. A handle
// of a type is good until its library is unloaded.

/// Begins a walk over all registered classes; there is one for the process. \return the first class, or null.
VX_C_API const VXRuntimeType* VXRuntimeGetFirstModuleType(void);
/// \return the next class of the walk, null at the end.
VX_C_API const VXRuntimeType* VXRuntimeGetNextModuleType(void);

/// \param name name of a class; null and empty are refused. \return the class, or null for an unknown name.
VX_C_API const VXRuntimeType* VXTypeFromName(const char* name);

/// \param type null is refused. \return the name of the class, "BadType" if it has none; null after a refusal.
VX_C_API const char* VXTypeGetName(const VXRuntimeType* type);
/// \param type null is refused. \return the name of the library that registered the class, "" if it has none; null
///        after a refusal.
VX_C_API const char* VXTypeGetDllName(const VXRuntimeType* type);
/// \param type null is refused. \return the name of the parent class, "No parent" without one, "BadType" if it has no
///        name; null after a refusal.
VX_C_API const char* VXTypeGetParentName(const VXRuntimeType* type);
/// \param type null is refused. \return the parent class; null without one and after a refusal.
VX_C_API const VXRuntimeType* VXTypeGetParentType(const VXRuntimeType* type);
/// \param type null is refused. \return 1 if no instances can be made, 0 if they can, -1 after a refusal.
VX_C_API int VXTypeIsAbstract(const VXRuntimeType* type);
/// \param type a class. \param parent name of another one.
/// \return 1 if the class is the other one or derived from it, else 0, also for nulls and unknown names. Nothing is
///         reported.
VX_C_API int VXTypeIsDerivedFrom(const VXRuntimeType* type, const char* parent);

/// \param base null is refused. \return the class of the object; null if it isn't registered and after a refusal.
VX_C_API const VXRuntimeType* VXBaseGetTypeObject(VXBase* base);
/// \param base null, and an object whose class isn't registered, are refused. \return the name of the object's class,
///        null after a refusal.
VX_C_API const char* VXBaseGetType(VXBase* base);
/// \param base as in VXBaseGetType(). \return the name of the parent of the object's class, "No parent" without one;
///        null after a refusal.
VX_C_API const char* VXBaseGetParentType(VXBase* base);
/// \param base as in VXBaseGetType(). \param superClassName name of a class; null, empty and unknown ones are refused.
/// \return 1 if the object's class is that class or derived from it, else 0.
VX_C_API int VXBaseIsDerivedFrom(VXBase* base, const char* superClassName);

// Modules ------------------------------------------------------------------------------------------------------------

/// Makes a module by the name of its class.
/// \param className null and empty are refused.
/// \return the module, which the caller deletes by VXDeleteModule(). Null for an unknown or abstract class, without a
///         report, and if its constructor throws, which is reported as fatal with the code that it throws, or 1.
VX_C_API VXBaseOp* VXCreateModuleFromName(const char* className);
/// Makes a module by its class.
/// \param type null is refused. \return as VXCreateModuleFromName().
VX_C_API VXBaseOp* VXCreateModuleFromType(const VXRuntimeType* type);
/// Deletes a module with its fields. Connections to other modules are taken away.
/// \param baseOp a module that this interface made; null is refused. A sensor that is attached to one of its fields
///        lives on. Refused with ::VX_MISUSED_INTERFACE while a calculation runs and while the module handles a
///        notification. A sensor's callback must not delete the module of the field that calls it.
VX_C_API void VXDeleteModule(VXBaseOp* baseOp);

/// \param baseOp null is refused. \param name name of a field; null and empty are refused.
/// \return the first field of that name; null after a refusal, and after a warning for an unknown name.
VX_C_API VXField* VXModuleGetField(VXBaseOp* baseOp, const char* name);
/// \param baseOp null is refused. \return the number of fields; 0 after a refusal.
VX_C_API int VXModuleGetNumFields(VXBaseOp* baseOp);
/// \param baseOp null is refused. \param n number of the field, from 0.
/// \return the field; null after a refusal, and after a warning for a number out of range.
VX_C_API VXField* VXModuleGetIndexedField(VXBaseOp* baseOp, int n);
/// Sets a field from a text, as VXFieldSetValue().
/// \param baseOp null is refused. \param fieldName null and empty are refused; an unknown one is answered by a warning.
/// \param value null is refused.
VX_C_API void VXModuleSetFieldValue(VXBaseOp* baseOp, const char* fieldName, const char* value);

/// Keeps the fields of a module from notifying, so that many can be set without a reaction to each. Notifications are
/// dropped, not kept for later. A failure of the module is reported as fatal, and the call goes on.
/// \param baseOp null is refused.
VX_C_API void VXBeginLoadFields(VXBaseOp* baseOp);
/// Lets the fields of a module notify again. A failure of the module is reported as fatal, and the call goes on.
/// \param baseOp null is refused.
VX_C_API void VXEndLoadFields(VXBaseOp* baseOp);
/// Tells a module that its fields are going to be read for saving. \param baseOp null is refused.
VX_C_API void VXBeginSaveFields(VXBaseOp* baseOp);
/// Tells a module that its fields have been read. \param baseOp null is refused.
VX_C_API void VXEndSaveFields(VXBaseOp* baseOp);

// Fields -------------------------------------------------------------------------------------------------------------
//
// A bad field is refused by every function, see the table of codes above. Each setter notifies, whether or not the
// value changes.

/// \return the name of the field; null after a refusal.
VX_C_API const char* VXFieldGetName(VXField* field);
/// \return the name of the field's class; null after a refusal.
VX_C_API const char* VXFieldGetType(VXField* field);

/// Sets the value from a text, as the class of the field reads it.
/// \param field any field. \param value null is refused.
VX_C_API void VXFieldSetValue(VXField* field, const char* value);
/// \return the length of the value's text, without a terminator; 0 after a refusal.
VX_C_API int VXFieldGetValueSize(VXField* field);
/// Copies the value's text as `strncpy` does: the rest of the buffer is filled with zeros, and there is no terminator
/// if the text fills the buffer.
/// \param field any field. \param value takes the text; null is refused. \param size characters of the buffer; a
///        negative one is refused.
/// \return the length of the whole text plus 1, so that a result above `size` tells of a truncation; 0 after a refusal.
VX_C_API int VXFieldGetValue(VXField* field, char* value, int size);

/// Sets a float field, or a field of a class derived from it. \param field the field. \param value the new value.
VX_C_API void VXFieldSetFloatValue(VXField* field, float value);
/// \return the value of a float field, 0 after a refusal.
VX_C_API float VXFieldGetFloatValue(VXField* field);
/// Sets a double field. \param field the field. \param value the new value.
VX_C_API void VXFieldSetDoubleValue(VXField* field, double value);
/// \return the value of a double field, 0 after a refusal.
VX_C_API double VXFieldGetDoubleValue(VXField* field);
/// Sets an integer field. \param field the field. \param value the new value.
VX_C_API void VXFieldSetIntValue64(VXField* field, VXint64 value);
/// \return the value of an integer field, 0 after a refusal.
VX_C_API VXint64 VXFieldGetIntValue64(VXField* field);
/// As VXFieldSetIntValue64(), with the value widened by sign.
VX_C_API void VXFieldSetIntValue(VXField* field, int value);
/// As VXFieldGetIntValue64(), with the low 32 bits of the value.
VX_C_API int VXFieldGetIntValue(VXField* field);

/// \return the index that an enum field holds, 0 after a refusal.
VX_C_API int VXFieldGetEnumValue(VXField* field);
/// Chooses an item of an enum field. \param field the field. \param val its index; one that is out of range is refused
///        with ::VX_BAD_INDEX.
VX_C_API void VXFieldSetEnumValue(VXField* field, int val);
/// \return the number of items of an enum field, 0 after a refusal.
VX_C_API int VXFieldGetNumEnums(VXField* field);
/// \param field an enum field. \param i index of an item; one out of range is fatal, see the conventions on exceptions.
/// \param value takes the index, or -1 for a bad field; null is refused.
/// \return the text of the item, good as long as the field; "" after a refusal.
VX_C_API const char* VXFieldGetEnumName(VXField* field, int i, int* value);

/// Notifies as if the value had changed. Touching the field of an output invalidates its image. \param field any field.
VX_C_API void VXFieldTouch(VXField* field);

// Fields that hold pointers. Nothing that is set is owned, but the tag list field takes a reference on its list.

/// \return the object that a base field holds; null without one and after a refusal.
VX_C_API VXBase* VXBaseFieldGetPtr(VXField* field);
/// Sets the object of a base field. \param field the field. \param ptr may be null.
VX_C_API void VXBaseFieldSetPtr(VXField* field, VXBase* ptr);
/// \return the node that a scene node field holds; null without one and after a refusal.
VX_C_API VXSoNode* VXSoNodeFieldGetPtr(VXField* field);
/// Sets the node of a scene node field. \param field the field. \param ptr may be null.
VX_C_API void VXSoNodeFieldSetPtr(VXField* field, VXSoNode* ptr);
/// \return the pointer that a pointer field holds; null without one and after a refusal.
VX_C_API void* VXPointerFieldGetPtr(VXField* field);
/// Sets the pointer of a pointer field. \param field the field. \param ptr may be null.
VX_C_API void VXPointerFieldSetPtr(VXField* field, void* ptr);
/// \return the list that a tag list field holds, with no reference for the caller; null without one and after a
/// refusal.
VX_C_API VXDicomTagList* VXDicomTagListFieldGetPtr(VXField* field);
/// Sets the list of a tag list field, which takes a reference. \param field the field. \param ptr may be null.
VX_C_API void VXDicomTagListFieldSetPtr(VXField* field, VXDicomTagList* ptr);

/// \param baseField a base field. \return the state of the object that it holds as a text, which the caller gives back
///        by VXBaseFieldClearPersistentState(). Null without an object, for an empty state and after a refusal.
VX_C_API char* VXBaseFieldGetPersistentState(VXField* baseField);
/// Sets the state of the object that a base field holds; without an object nothing happens.
/// \param baseField the field. \param state the text; null is refused.
VX_C_API void VXBaseFieldSetPersistentState(VXField* baseField, const char* state);
/// Gives back a text of VXBaseFieldGetPersistentState(), through the object that the field holds, which must be the
/// same. Without an object nothing happens.
/// \param baseField the field. \param state the text; null is ignored.
VX_C_API void VXBaseFieldClearPersistentState(VXField* baseField, char* state);

// Connections --------------------------------------------------------------------------------------------------------

/// Connects an image input to an image output without anything else: no field is attached, so a change of the output
/// reaches nobody through this connection.
/// \param inField field of an input. \param outField field of an output. Others are refused. \return 1, or 0 after a
///        refusal.
VX_C_API int VXImageFieldConnectFromNoNotify(VXField* inField, VXField* outField);
/// Connects two fields.
///
/// The field of an input and that of an output: the input is connected to the output and leaves the one it had, and a
/// change of the output from now on touches the input's field and so reaches its module. Any other two: the value of
/// `outField` is copied to `inField` as text, now and after each change. Connecting image fields notifies nobody.
/// \param inField,outField any fields. \return 1, or 0 after a refusal.
VX_C_API int VXFieldConnectFrom(VXField* inField, VXField* outField);
/// Takes away all connections into a field, the image connection among them. Nobody is notified. \param inField any
///        field.
VX_C_API void VXFieldDisconnect(VXField* inField);

// Sensors ------------------------------------------------------------------------------------------------------------

/// Called when the field that a sensor is attached to changes or is touched.
/// \param userData as given to VXCreateFieldSensor(). \param sensor the ::VXFieldSensor that calls; it must not be
///        deleted meanwhile, and neither must its field.
typedef void (*VXFieldSensorCB)(void* userData, void* sensor);

/// Makes a sensor that is attached to no field.
/// \param userData handed to the callback. \param callback null is reported with ::VX_NO_MEMORY and the sensor is made
///        anyway; it then fails when it is to call.
/// \return the sensor, which the caller deletes by VXDeleteFieldSensor(); null without memory, which is reported as
///         fatal.
VX_C_API VXFieldSensor* VXCreateFieldSensor(void* userData, VXFieldSensorCB callback);
/// Detaches and deletes a sensor. \param sensor null is refused, and so is a sensor whose callback is running.
VX_C_API void VXDeleteFieldSensor(VXFieldSensor* sensor);
/// \param sensor null is refused. \return the field that the sensor is attached to; null without one and after a
///        refusal.
VX_C_API VXField* VXFieldSensorGetField(VXFieldSensor* sensor);
/// Attaches a sensor to a field. It leaves the one that it was attached to.
/// \param sensor null is refused. \param field null and bad fields are refused.
VX_C_API void VXFieldSensorAttach(VXFieldSensor* sensor, VXField* field);
/// Takes a sensor from its field; without one nothing happens. \param sensor null is refused.
VX_C_API void VXFieldSensorDetach(VXFieldSensor* sensor);

// Images -------------------------------------------------------------------------------------------------------------
//
// An image is told by the field of its output. Functions that read properties bring the image up to date first, which
// runs module code through the network. All of them refuse to run inside of one another (22, VX_RECURSION_STOPPED),
// whichever module code or callback calls; VXGetImageState() and its sibling too. Otherwise each returns 0 or the code
// that says why the image is not valid, with its outputs as told.

/// The extent of an image.
/// \param outField field of an output. \param x,y,z,c,t,u take the extent, its low 32 bits; all become 0 with another
///        result than 0. Nulls are refused, with nothing written. \return an error code.
VX_C_API VXErrorCode VXImageGetSize6D(VXField* outField, int* x, int* y, int* z, int* c, int* t, int* u);
/// As VXImageGetSize6D(), without t and u.
VX_C_API VXErrorCode VXImageGetSize(VXField* outField, int* x, int* y, int* z, int* c);
/// The extent of the pages of an image. Arguments and results are those of VXImageGetSize6D().
VX_C_API VXErrorCode VXImageGetPageSize6D(VXField* outField, int* x, int* y, int* z, int* c, int* t, int* u);
/// The voxel type of an image.
/// \param outField field of an output. \param dType takes the number of the type. \param dSize takes its size in bytes.
///        Both stay as they are with another result than 0. Nulls are refused. \return an error code.
VX_C_API VXErrorCode VXImageGetType(VXField* outField, int* dType, int* dSize);
/// The size of a voxel in world units.
/// \param outField field of an output. \param x,y,z take the edge lengths; all become 0 with another result than 0.
///        Nulls are refused. \return an error code.
VX_C_API VXErrorCode VXImageGetVoxelSize(VXField* outField, float* x, float* y, float* z);
/// The smallest voxel value that the properties of an image name.
/// \param outField field of an output. \param minValue takes the value; it becomes 0 with another result than 0. Null
///        is refused. \return an error code.
VX_C_API VXErrorCode VXImageGetMinValue(VXField* outField, double* minValue);
/// The greatest voxel value that the properties of an image name. As VXImageGetMinValue().
VX_C_API VXErrorCode VXImageGetMaxValue(VXField* outField, double* maxValue);

/// The matrix from voxel to world coordinates.
/// \param outField field of an output. \param mat takes sixteen values, row after row; they stay as they are with
///        another result than 0. Null is refused. \return an error code.
VX_C_API VXErrorCode VXImageGetVoxelToWorldMatrix(VXField* outField, float* mat);
/// The matrix from world to voxel coordinates. As VXImageGetVoxelToWorldMatrix().
VX_C_API VXErrorCode VXImageGetWorldToVoxelMatrix(VXField* outField, float* mat);
/// Maps a voxel coordinate to world coordinates.
/// \param outField field of an output. \param srcX,srcY,srcZ the point. \param dstX,dstY,dstZ take its image; they stay
///        as they are with another result than 0. Nulls are refused. \return an error code.
VX_C_API VXErrorCode VXImageMapVoxelToWorld(VXField* outField, float srcX, float srcY, float srcZ, float* dstX,
                                            float* dstY, float* dstZ);
/// Maps a world coordinate to voxel coordinates. As VXImageMapVoxelToWorld().
VX_C_API VXErrorCode VXImageMapWorldToVoxel(VXField* outField, float srcX, float srcY, float srcZ, float* dstX,
                                            float* dstY, float* dstZ);

/// The first extension of an image that is of a class.
/// \param outField field of an output. \param imagePropertyTypeClassName name of the class; null is refused, an unknown
///        one finds nothing. \param imagePropertyExtension takes the extension, which is the image's and good until the
///        image changes. Null is refused. It becomes null with another result than 0, and stays as it is if there is no
///        such extension. \return an error code.
VX_C_API VXErrorCode VXImageGetFirstImagePropertyExtensionByType(
    VXField* outField, const char* imagePropertyTypeClassName, const VXImagePropertyExtension** imagePropertyExtension);
/// The DICOM tag list of an image.
/// \param outField field of an output. \param tagList takes the list, with no reference for the caller, or null without
///        one and with another result than 0. Null is refused. \return an error code.
VX_C_API VXErrorCode VXImageGetDicomTagList(VXField* outField, const VXDicomTagList** tagList);

/// \param outField field of an output. \return 0 if the image is valid, else an error code.
VX_C_API VXErrorCode VXGetImageState(VXField* outField);
/// \param outField field of an output; null is answered without a report.
/// \return the text of the image's state, which is the image's and good until that changes; without an image the
///         description of the error, never null.
VX_C_API const char* VXGetImageStateString(VXField* outField);

// What an image holds in memory. These functions don't bring the image up to date, and return 0 or 7. Those that clear
// are refused with ::VX_MISUSED_INTERFACE, which they return, while a calculation runs.

/// Drops the pages of an image. \param outField field of an output.
VX_C_API VXErrorCode VXClearPages(VXField* outField);
/// Drops the memory image of an output, unless its module controls that itself. \param outField field of an output.
VX_C_API VXErrorCode VXClearMemoryImg(VXField* outField);
/// Drops both. \param outField field of an output.
VX_C_API VXErrorCode VXClearPagesAndMemoryImg(VXField* outField);
/// \param outField field of an output. \param numBytes takes the bytes in its pages, 0 for a bad field; null is refused
///        with ::VX_BAD_PARAMETER.
VX_C_API VXErrorCode VXGetPageMemorySize(VXField* outField, unsigned int* numBytes);
/// \param outField field of an output. \param numBytes takes the bytes in its memory image, 0 for a bad field; null is
///        refused with ::VX_BAD_PARAMETER.
VX_C_API VXErrorCode VXGetMemoryImgSize(VXField* outField, unsigned int* numBytes);

// Tiles --------------------------------------------------------------------------------------------------------------

/// Calculates a box of voxels.
///
/// Voxels of the box that lie outside of the image are not written, except where a page at the border reaches beyond
/// it: they hold whatever the module wrote there. After a failure the tile may be filled in part; a buffer that was
/// allocated is given back by the caller all the same.
/// \param outField field of an output. \param memory the address of the buffer's address; null is refused. A null
///        address lets the library allocate a buffer, which the caller gives back by VXImageFreeTile(); another one is
///        that of a buffer of the caller's with room for the whole box, x fastest and u slowest.
/// \param x,y,z,c,t,u the first voxel. \param nx,ny,nz,nc,nt,nu extent of the box; one below 1 makes it empty.
/// \param datatype voxel type of the tile; voxels are converted. One that isn't valid is refused. \return an error
/// code.
VX_C_API VXErrorCode VXImageGetTile6D(VXField* outField, void** memory, int x, int y, int z, int c, int t, int u,
                                      int nx, int ny, int nz, int nc, int nt, int nu, VXDataType datatype);
/// As VXImageGetTile6D(), at t = u = 0 with an extent of 1 there.
VX_C_API VXErrorCode VXImageGetTile4D(VXField* outField, void** memory, int x, int y, int z, int c, int nx, int ny,
                                      int nz, int nc, VXDataType datatype);
/// As VXImageGetTile6D(), at c = t = u = 0 with an extent of 1 there.
VX_C_API VXErrorCode VXImageGetTile3D(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                                      VXDataType datatype);
/// As VXImageGetTile3D().
VX_C_API VXErrorCode VXImageGetTile(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                                    VXDataType datatype);

/// As VXImageGetTile6D(), with the voxel values mapped linearly.
/// \param outField,memory,x,y,z,c,t,u,nx,ny,nz,nc,nt,nu,datatype as there.
/// \param srcMin,srcMax range of values of the image. \param dstMin,dstMax range that it is mapped to. The limits of
///        each may be given in either order; an input range of one value is mapped to the lower limit at scale 1.
VX_C_API VXErrorCode VXImageGetScaledTile6D(VXField* outField, void** memory, int x, int y, int z, int c, int t, int u,
                                            int nx, int ny, int nz, int nc, int nt, int nu, VXDataType datatype,
                                            double srcMin, double srcMax, double dstMin, double dstMax);
/// As VXImageGetScaledTile6D(), at t = u = 0 with an extent of 1 there.
VX_C_API VXErrorCode VXImageGetScaledTile4D(VXField* outField, void** memory, int x, int y, int z, int c, int nx,
                                            int ny, int nz, int nc, VXDataType datatype, double srcMin, double srcMax,
                                            double dstMin, double dstMax);
/// As VXImageGetScaledTile6D(), at c = t = u = 0 with an extent of 1 there.
VX_C_API VXErrorCode VXImageGetScaledTile3D(VXField* outField, void** memory, int x, int y, int z, int nx, int ny,
                                            int nz, VXDataType datatype, double srcMin, double srcMax, double dstMin,
                                            double dstMax);
/// As VXImageGetScaledTile3D().
VX_C_API VXErrorCode VXImageGetScaledTile(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                                          VXDataType datatype, double srcMin, double srcMax, double dstMin,
                                          double dstMax);

/// Gives back a tile that the library allocated. \param data the tile; null is ignored.
VX_C_API void VXImageFreeTile(void* data);

// Cache --------------------------------------------------------------------------------------------------------------
//
// The cache of the default host. Pages over its limit are dropped after a calculation, the cheap ones first.

/// \return the size of all pages in KB of 1024 bytes, rounded down.
VX_C_API VXuint64 VXCacheGetCurrentSizeKB(void);
/// \return the limit in KB; 50000 at start.
VX_C_API VXuint64 VXCacheGetMaxSizeKB(void);
/// \return the most that all pages ever took at once, in KB, rounded down; what is locked counts too, so it may be
/// above
///         the limit.
VX_C_API VXuint64 VXCacheGetPeakSizeKB(void);
/// Sets the limit. It takes effect after the next calculation. \param size in KB, widened by sign: a negative one is
///        a huge limit.
VX_C_API void VXCacheSetMaxSizeKB(int size);
/// \return the memory optimization level, 0 to 10; 0 at start.
VX_C_API VXuint64 VXCacheGetMemoryOptLevel(void);
/// Sets the memory optimization level: pages of a priority below it are dropped after each calculation, whatever the
/// limit. \param level 0 keeps what fits the limit, 10 and above drops all pages; a negative one counts as huge.
VX_C_API void VXCacheSetMemoryOptLevel(int level);
/// Drops all pages. Refused while a calculation runs.
VX_C_API void VXClearCache(void);

// Host ---------------------------------------------------------------------------------------------------------------

/// Sets how many threads calculate pages. \param numThreads a negative one counts as huge.
/// \return 0; ::VX_BAD_PARAMETER for 0, with no report and nothing set.
VX_C_API VXErrorCode VXSetMaxNumThreads(int numThreads);
/// \return how many threads calculate pages, at least 1.
VX_C_API int VXGetMaxNumThreads(void);

/// \return how many pages modules have calculated on the default host since that was made. A page that was dropped and
///         calculated again counts again; pages that a bypassed module or a memory image supplies don't count.
VX_C_API VXuint64 VXHostGetNumPagesCalculated(void);
/// \return how often a calculation on the default host found a page that it needed calculated already.
VX_C_API VXuint64 VXHostGetNumPagesHit(void);

/// Called to tell of the progress of a calculation, on the thread that requested it.
/// \param userData as given to VXHostSetProgressCB(). \param info1,info2 texts, good during the call.
typedef void (*VXProgressCB)(void* userData, const char* info1, const char* info2);
/// Sets the progress callback of the default host. \param userData handed to the callback. \param callback null for
///        none.
VX_C_API void VXHostSetProgressCB(void* userData, VXProgressCB callback);
/// Calls the progress callback, if there is one. \param info1,info2 handed to the callback as they are.
VX_C_API void VXHostUpdateProgress(const char* info1, const char* info2);

/// Asked whether a calculation shall stop, possibly on a worker thread.
/// \param userData as given to VXHostSetBreakCheckCB(). \param field null for that question; otherwise it takes the
///        ::VXField of a trigger that the user pressed meanwhile, and is null before.
/// \return not 0 to stop.
typedef int (*VXBreakCheckCB)(void* userData, void** field);
/// Sets the break check callback of the default host. \param userData handed to the callback. \param callback null for
///        none.
VX_C_API void VXHostSetBreakCheckCB(void* userData, VXBreakCheckCB callback);

// Messages -----------------------------------------------------------------------------------------------------------

/// Switches messages to the standard output on (non-zero) or off (0).
VX_C_API void VXSendMessagesToCout(int on);
/// Switches messages to the error stream on (non-zero) or off (0).
VX_C_API void VXSendMessagesToCerr(int on);
/// \return 1 if messages go to the standard output, else 0.
VX_C_API int VXAreMessagesSentToCout(void);
/// \return 1 if messages go to the error stream, else 0.
VX_C_API int VXAreMessagesSentToCerr(void);

// State --------------------------------------------------------------------------------------------------------------

/// Saves the global settings of the library on a stack and goes on with a new default host and default messages, see
/// vx::State. Refused with ::VX_MISUSED_INTERFACE while a calculation runs.
/// \param readEnvVars not 0: read the environment variables afterwards, as at start-up.
/// \return 0, or ::VX_MISUSED_INTERFACE if the settings could not be saved.
VX_C_API VXErrorCode VXPushState(int readEnvVars);
/// Restores the settings saved last. Refused with ::VX_MISUSED_INTERFACE while a calculation runs.
/// \return 0; ::VX_EMPTY_STACK without saved settings; another code for a failure.
VX_C_API VXErrorCode VXPopState(void);

#endif
