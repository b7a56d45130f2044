/// \file vxUtilsAPI.h
/// The C functions of the base layer: memory, messages, notification, numbers, switches and hooks.
///
/// No function here throws or lets an exception pass. Unless a function says otherwise it may be called from any
/// thread.

#ifndef VX_UTILS_API_H
#define VX_UTILS_API_H

#include "vxTypes.h"

// Flags that guards test ---------------------------------------------------------------------------------------------

/// 0 for the whole run. It is read at run time, so that no compiler removes the guard code that tests it.
VX_C_API int VXAlwaysFalse;
/// Non-zero for the whole run, see ::VXAlwaysFalse.
VX_C_API int VXAlwaysTrue;

// Memory -------------------------------------------------------------------------------------------------------------

/// Allocates memory for voxels, texts and whatever else is handed across a boundary.
/// \param size in bytes; 0 gives a valid block that holds nothing. A size that can't be addressed is a failure.
/// \param handling what to do on failure.
/// \return a block that is aligned to 64 bytes and not initialised, or null. The caller gives it back by VXFree().
VX_C_API void* VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);

/// Changes the size of a block from VXAlloc() and its kin; the alignment stays.
/// \param memory the block, or null for a new one.
/// \param size as in VXAlloc(). What both sizes cover is kept.
/// \param handling what to do on failure.
/// \return the block, which may have moved, or null; after a failure the old block is still valid and unchanged.
VX_C_API void* VXRealloc(void* memory, VXuint64 size, VXMemoryErrorHandling handling);

/// Gives back a block from VXAlloc(), VXRealloc(), VXStrDup() or VXMemDup(). Null is ignored.
VX_C_API void VXFree(void* memory);

/// Copies a text with its terminator into memory from VXAlloc(). Null gives null, without a report.
VX_C_API char* VXStrDup(const char* text, VXMemoryErrorHandling handling);

/// Copies `size` bytes into memory from VXAlloc(). Null gives null, without a report.
VX_C_API void* VXMemDup(const void* data, VXuint64 size, VXMemoryErrorHandling handling);

// Messages -----------------------------------------------------------------------------------------------------------

/// \return a static text that describes an error code. An unknown code gives "Unknown error code.", never null.
VX_C_API const char* VXGetErrorCodeDescription(VXErrorCode code);

/// Prints a fatal message and calls the message callbacks without allocating: for a catch block, where
/// ErrorOutput::printAndNotify() itself may fail. Filter and streams are those of the message channel. An exception
/// that a callback throws is dropped.
/// \param file source file of the report, null is shown as an empty text.
/// \param line line in that file.
/// \param errorCode what failed.
VX_C_API void VXPrintAndNotifyFatal(const char* file, int line, VXErrorCode errorCode);

/// One message, as a message callback sees it. The pointers are good during the call only and are never null but
/// for the handled object and its type.
typedef struct VXMessage {
  VXMessageType type;             ///< Level of the message.
  VXErrorCode errorCode;          ///< Code of the failure; 0 where the failure came with a text of its own.
  const char* prefix;             ///< Library that sends the message: "VX".
  const char* functionLead;       ///< Text in front of the function: "Function=".
  const char* functionName;       ///< Label of the function.
  const char* errorText;          ///< Description of the code, or the failure's own text.
  const char* reason;             ///< What was wrong and what happens now.
  const char* file;               ///< Source file of the report.
  int line;                       ///< Line in that file.
  const void* handledObject;      ///< Object that the message is about, or null.
  const void* handledObjectType;  ///< Its `vx::RuntimeType`, or null.
} VXMessage;

/// Called once for each message whose level passes the filter and is in the mask of the registration.
/// It runs on the thread that sends the message, possibly on several threads at once, and no lock is held. It may
/// send messages itself: those are printed, and reach the other callbacks but not this one again. It may add and
/// remove callbacks, itself among them.
typedef void (*VXMessageCB)(void* userData, const VXMessage* message);

/// Names one registration of a callback; 0 names none. Handles are never used twice.
typedef VXuint64 VXCallbackHandle;

/// Registers a message callback with `vx::VXErrorOutput`.
/// \param callback the function; null is refused.
/// \param userData passed through; it must stay valid until the callback is removed.
/// \param levelMask the levels wanted, such as VX_ERROR | VX_FATAL. The filter of the channel comes first.
/// \return a handle for VXRemoveMessageCB(), or 0 if nothing was registered.
VX_C_API VXCallbackHandle VXAddMessageCB(VXMessageCB callback, void* userData, unsigned int levelMask);

/// Removes a message callback.
/// When this returns, the callback doesn't run any more and won't run again, and its user data may be released. The
/// one exception: inside a callback nobody is waited for, since two callbacks might wait for one another.
/// \return 1 if the handle named a registration, else 0.
VX_C_API int VXRemoveMessageCB(VXCallbackHandle handle);

// Notification -------------------------------------------------------------------------------------------------------

/// Called once for each notification whose code is in the mask of the registration, on the thread that sends it, with
/// no lock of the notification held. It may add and remove callbacks, itself among them. What the arguments are depends
/// on the code.
typedef void (*VXNotifyCB)(void* userData, unsigned int code, void* arg1, void* arg2);

/// Registers a notification callback with `vx::VXNotify`.
/// \param callback the function; null is refused.
/// \param userData passed through; it must stay valid until the callback is removed.
/// \param codeMask a code is one class bit and one event bit, and is passed on if the mask has all its bits: 0x80001
///        selects that one code, 0x8ffff all codes of its class, 0xffffffff everything.
/// \return a handle for VXRemoveNotifyCB(), or 0 if nothing was registered.
VX_C_API VXCallbackHandle VXAddNotifyCB(VXNotifyCB callback, void* userData, unsigned int codeMask);

/// Removes a notification callback, with the promises of VXRemoveMessageCB().
/// \return 1 if the handle named a registration, else 0.
VX_C_API int VXRemoveNotifyCB(VXCallbackHandle handle);

// Switches -----------------------------------------------------------------------------------------------------------

/// Sets whether the boundaries catch every exception (non-zero) or let all but error codes pass to the host (0).
VX_C_API void VXEnableExceptionHandling(int enable);
/// \return 1 or 0, see VXEnableExceptionHandling(); 1 at start.
VX_C_API int VXIsExceptionHandlingEnabled(void);

/// \return 1 while worker threads calculate pages, else 0.
VX_C_API int VXIsMultithreadingActive(void);
/// Sets what VXIsMultithreadingActive() gives. Only while no worker runs: vx::Mutex::lockWhileMultithreading() and its
/// counterpart must see the same answer.
VX_C_API void _VXSetMultithreadingActive(int active);

// Link checks --------------------------------------------------------------------------------------------------------

/// Checks whether a library that uses the C++ classes fits this base layer: major, minor and release number must be
/// those of the base layer, since classes are laid out anew with each release. The build number may differ. A
/// mismatch is reported as an error with ::VX_BAD_PARAMETER.
/// \param major,minor,release,build version numbers that the library was compiled with.
/// \param version its version text, for the message; may be null.
/// \param initName its start-up function, for the message; may be null.
/// \return 1 if compatible, else 0.
VX_C_API int VXCheckCPPAPILinkCompatibility(int major, int minor, int release, int build, const char* version,
                                            const char* initName);

/// Checks whether a caller of the C interface fits this build: the major number must be the same, and the minor and
/// release number together not newer, since functions are added but never changed within one major number.
/// \param major,minor,release numbers that the caller was compiled with; negative ones don't fit. Nothing is reported.
/// \return 1 if compatible, else 0.
VX_C_API int VXIsCAPILinkCompatible(int major, int minor, int release);

// Numbers and bytes --------------------------------------------------------------------------------------------------

/// Reverses the bytes of each element of a buffer, in place.
/// \param data the buffer; null is ignored.
/// \param numBytes its size; bytes behind the last whole element stay.
/// \param elementSize bytes of an element; 0 and 1 change nothing.
VX_C_API void VXSwapBytes(void* data, size_t numBytes, size_t elementSize);

/// \return 1 on a little-endian machine, else 0.
VX_C_API int VXIsLittleEndian(void);

/// Reads a decimal 64-bit number: white space, a sign, digits; what follows is ignored. It does not depend on the
/// locale. A number beyond the range becomes the nearest limit.
/// \param text may be null, which counts as no number.
/// \param value takes the number, or 0 if there is none; null refuses the call.
/// \return 1 if a number was read, else 0.
VX_C_API int VXint64Scan(const char* text, VXint64* value);

/// As VXint64Scan(), for an unsigned number. A minus sign in front wraps the number around, as `strtoull` has it; one
/// whose digits are beyond the range becomes the largest value.
VX_C_API int VXuint64Scan(const char* text, VXuint64* value);

/// Reads the text form of a pointer: "NULL", a decimal number, or a hexadecimal one behind "0x". White space around
/// it is skipped. The pointer is only made, never followed.
/// \param text may be null, which gives null.
/// \param reportErrors non-zero: a text that is no pointer, or one beyond the range, is reported as an error with
///        ::VX_BAD_PARAMETER.
/// \param functionName label of that message; null for this function's own name.
/// \return the pointer, or null for a text that is none.
VX_C_API void* VXStringToPtr(const char* text, int reportErrors VX_DEFAULT(0), const char* functionName VX_DEFAULT(0));

// Hooks of a host application ----------------------------------------------------------------------------------------

/// Callbacks by which a host application gives its properties by name. They are stored and handed out, never called.
typedef struct VXApplicationProperties {
  const char* (*getStringCB)(void* userData, const char* name);  ///< Gives a property as a text.
  int (*getInt32CB)(void* userData, const char* name);           ///< Gives a property as an integer.
  double (*getDoubleCB)(void* userData, const char* name);       ///< Gives a property as a floating point number.
  int (*getBoolCB)(void* userData, const char* name);            ///< Gives a property as 0 or 1.
  void* applicationUsrData;                                      ///< First argument of the four.
} VXApplicationProperties;

/// Filters events of a host application. It is stored and handed out, never called.
typedef int (*VXEventFilterApplicationHookCB)(void* userData, void* event);

/// \return the record that was stored, owned by the base layer and good until the next call of the setter; null if
///         there is none. Host thread only.
VX_C_API VXApplicationProperties* VXGetApplicationPropertiesHook(void);
/// Stores a copy of the record; null and a record of nulls remove it. Host thread only.
VX_C_API void VXSetApplicationPropertiesHook(const VXApplicationProperties* properties);

/// \return the event filter, or null. Host thread only.
VX_C_API VXEventFilterApplicationHookCB VXGetEventFilterApplicationHookCB(void);
/// \return the user data of the event filter, or null. Host thread only.
VX_C_API void* VXGetEventFilterApplicationHookCBUserData(void);
/// Stores the event filter and its user data; null removes it. Host thread only.
VX_C_API void VXSetEventFilterApplicationHook(VXEventFilterApplicationHookCB callback, void* userData);

#endif
