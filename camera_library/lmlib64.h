// LmLib64: a camera library that is driven through one tree of nodes.
//
// The tree is like a JSON document: it has objects with named children, arrays with numbered children, and leaves that
// hold a number, a string, a boolean, null or a block of binary data. A client reads and writes nodes, and runs
// commands by writing to nodes below /Execute. The library opens no window and does not depend on the program that uses
// it. Another library with the same functions can replace it, and the program need not be built again.
//
// Rules that hold for every function
//
// Paths. The root is the empty text. A child of an object is written as "/" and its name. An element of an array is
//   written as "/", a backslash and its index in decimal without leading zeros: /Execute/1/Parameters/Patterns/\0.
//   Names are not escaped. A name is not empty and contains neither "/" nor a backslash. Any other path gives
//   LmLibResultItemPathInvalid. A path has at most LMLIB_MAXIMUM_DEPTH parts; a longer one gives
//   LmLibResultNestingLimitReached.
// Writing. A write replaces the previous content of the node. Writing below an absent node creates the objects and
//   arrays on the way. The index of an array element may be at most one past the end; a greater index gives
//   LmLibResultItemPathInvalid. The children of an object have names, the children of an array have indices, and a leaf
//   has no children. Reading or writing any other child gives LmLibResultItemTypeNotCompatible.
// Reading. Reading an absent node gives LmLibResultItemInexistent. Reading a node whose type is not that of the
//   function gives LmLibResultItemTypeNotCompatible.
// Protected nodes. The root, /Path and every node below /Path belong to the library. Writing or erasing any of them
//   gives LmLibResultItemProtected. /Path/Manual is the folder of the manual and /Path/Application/LmView is the file
//   of the viewer. Both are absolute paths, and neither needs to exist. /Path/Version is the LMLIB_VERSION with
//   which the library was built. It can differ from that of the header with which the client was built.
// Results. The first parameter of every function points to a result code, which the function always sets; the pointer
//   may be null. If a function sets any code other than LmLibResultOperationSucceeded, the tree is unchanged, and every
//   value that the function returns or writes through pointers is 0 or null. LmLibResultInternalError means that
//   memory ran out or that the library has a fault. A null path or text counts as the empty text.
// Texts. Texts are NUL-terminated strings of char, and the library does not change their bytes. File names are in the
//   system's local 8-bit encoding. The names of the boards that the command GetModelInfo lists are in UTF-8. Returned
//   texts belong to the library and stay valid until the calling thread's next call into the library.
// Flags. Flags and booleans are int32_t; any non-zero value is true, and the library returns 1.
// Threads. Every function may be called from any thread at any time. Commands run one after the other on a thread of
//   the library.
// Child processes. A child made by fork() starts with a new library, even if other threads of the parent were using the
//   parent's library. The child's tree has only /Path, and no command runs in it. The parent is not affected. Texts
//   returned to the thread that forked stay valid in the child until the child's next call into the library.
// Life. The library is ready on the first call and needs no initialisation; see lmLibFinalize.
//
// Commands
//
// A slot is a child of /Execute, usually made with lmLibMakeUniqueItem. Write the parameters below the slot's
// "Parameters", then write the command's name as a string to its "Command". This copies the parameters for the command
// and removes an earlier "Result". When the command has finished, "Result" holds its result, and "Command" becomes
// null. Wait for that with lmLibWaitForType. If a command fails or does not exist, "Result" has the children
// "ErrorSymbol", "ErrorText" and "Execute"; the "Command" below this "Execute" holds the command's name. Until the
// command has finished, writing or erasing the slot's "Command" gives LmLibResultCommandRunning. If the slot is erased
// or replaced before that, the library discards the command's result. If /Execute is an array, its elements are not
// slots.
#ifndef CAMERA_LIBRARY_LMLIB64_H
#define CAMERA_LIBRARY_LMLIB64_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(LMLIB64_BUILDING)
#define LMLIB64_API __declspec(dllexport)
#else
#define LMLIB64_API __declspec(dllimport)
#endif
#else
#define LMLIB64_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// The version of this header: major, minor and patch, as in "1.20.3". It is the version of the whole project.
#define LMLIB_VERSION "0.2.0"

// The greatest number of parts in a path, and so the greatest depth of the tree.
#define LMLIB_MAXIMUM_DEPTH 64

// The greatest number of bytes in a text that lmLibSetJson reads.
#define LMLIB_MAXIMUM_JSON_SIZE 16777216

// Result codes. This library sets only those that the comments in this file mention.
enum LmLibResult {
    LmLibResultOperationSucceeded = 0,
    LmLibResultItemProtected = 1,
    LmLibResultCouldNotInterpretJsonText = 2,
    LmLibResultItemInexistent = 3,
    LmLibResultItemPathInvalid = 4,
    LmLibResultNoDebugData = 5,
    LmLibResultCouldNotOpenPort = 6,
    LmLibResultInternalError = 7,
    LmLibResultTimeout = 8,
    LmLibResultNotConnected = 9,
    LmLibResultMethodInvalid = 10,
    LmLibResultBadRequest = 11,
    LmLibResultItemMaximumUniqueCountReached = 12,
    LmLibResultItemTypeNotCompatible = 13,
    LmLibResultInvalidBufferSize = 14,
    LmLibResultBufferTooSmall = 15,
    LmLibResultBufferNotDivisibleByElementSize = 16,
    LmLibResultExecutionFailed = 17,
    LmLibResultDebugMessageOverflow = 18,
    LmLibResultCommandRunning = 19,
    LmLibResultCouldNotLoadLibrary = 20,
    LmLibResultCouldNotLoadFunction = 21,
    LmLibResultConnectionNotCompatible = 22,
    LmLibResultInitializationNotAllowed = 23,
    LmLibResultNestingLimitReached = 24,
    LmLibResultNoOpenProfileBlock = 25,
    LmLibResultLibraryAlreadyLoaded = 26,
    LmLibResultOperationCanceled = 27,
    LmLibResultInvalidParameters = 28
};

// The types of nodes.
enum LmLibType {
    LmLibTypeAbsent = 0,
    LmLibTypeNull = 1,
    LmLibTypeNumber = 2,
    LmLibTypeString = 3,
    LmLibTypeBoolean = 4,
    LmLibTypeObject = 5,
    LmLibTypeArray = 6,
    LmLibTypeBinary = 7
};

// Returns the text of a string node.
LMLIB64_API const char *lmLibGetString(int32_t *result, const char *path);

// Makes the node a string. Writing the "Command" of a slot starts the command of that name.
LMLIB64_API void lmLibSetString(int32_t *result, const char *path, const char *text);

// Returns the value of a number node. If the value is not a whole number in the range of int32_t, the result is
// LmLibResultItemTypeNotCompatible.
LMLIB64_API int32_t lmLibGetInt(int32_t *result, const char *path);

// Makes the node a number.
LMLIB64_API void lmLibSetInt(int32_t *result, const char *path, int32_t value);

// Returns the value of a number node.
LMLIB64_API double lmLibGetDouble(int32_t *result, const char *path);

// Makes the node a number. Infinities and NaN are kept; JSON text shows them as null.
LMLIB64_API void lmLibSetDouble(int32_t *result, const char *path, double value);

// Returns the value of a boolean node, 0 or 1.
LMLIB64_API int32_t lmLibGetBool(int32_t *result, const char *path);

// Makes the node a boolean.
LMLIB64_API void lmLibSetBool(int32_t *result, const char *path, int32_t value);

// Makes the node null.
LMLIB64_API void lmLibSetNull(int32_t *result, const char *path);

// Returns the node and everything below it as JSON text in UTF-8. Bytes that are not UTF-8 are replaced by U+FFFD.
// `numberPrecision` is the number of significant digits of a number that is not whole, 1 to 18; 0 means the fewest
// digits from which the same value can be read back. Any other `numberPrecision` gives LmLibResultInvalidParameters.
// With `allowScientificFormat`, a number has an exponent if its magnitude is below 1e-5 (but not 0) or at least 1e17;
// without it, no number has one. A binary node becomes an object with its format and its "ByteCount".
LMLIB64_API const char *lmLibGetJson(int32_t *result, const char *path, int32_t prettyPrint, int32_t numberPrecision,
                                     int32_t allowScientificFormat);

// Replaces the node by the content of the JSON text, which is in UTF-8. Writing a "Command" in this way starts no
// command. The result is LmLibResultCouldNotInterpretJsonText if the text is not JSON, if it is longer than
// LMLIB_MAXIMUM_JSON_SIZE, if a number is beyond the range of double, if a string contains U+0000, or if a name is not
// allowed in a path. The result is LmLibResultNestingLimitReached if the tree would become deeper than
// LMLIB_MAXIMUM_DEPTH.
LMLIB64_API void lmLibSetJson(int32_t *result, const char *path, const char *json);

// Returns the type of the node, an LmLibType. For an absent node, it returns LmLibTypeAbsent and the result is
// LmLibResultItemInexistent.
LMLIB64_API int32_t lmLibGetType(int32_t *result, const char *path);

// Returns the number of children of an object or array, or the number of bytes of a binary node.
LMLIB64_API int32_t lmLibGetCount(int32_t *result, const char *path);

// Returns the name of the node: the last part of its path, without a backslash. The name of the root is empty.
LMLIB64_API const char *lmLibGetName(int32_t *result, const char *path);

// Removes the node and everything below it. The index of each element after an erased element of an array becomes
// lower by 1.
LMLIB64_API void lmLibErase(int32_t *result, const char *path);

// Makes a new empty object below the parent and returns its path. The object's name consists of `baseName`, an
// underscore if `baseName` ends in a digit, and a number. No other child of the parent has this name, and no other item
// made by this function has had this number since the library was last finalised. The result is
// LmLibResultItemMaximumUniqueCountReached if no number is left.
LMLIB64_API const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName);

// Waits until the node has the type, without a time limit. If `waitForChange` is false, the node is checked only once,
// and another type gives LmLibResultTimeout. If the node is absent or is removed during the wait, the result is
// LmLibResultItemInexistent, unless the type is LmLibTypeAbsent. A `type` that is not an LmLibType gives
// LmLibResultInvalidParameters. lmLibFinalize ends every wait with LmLibResultOperationCanceled.
LMLIB64_API void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange);

// Returns the format of a binary node: width and height in elements, channels per element and bytes per channel value.
// `isFloat` is 1 for floating-point values. `timestamp` is when the data was made, in seconds since 1970. Channels are
// interleaved; rows run from the top, without padding. Every pointer may be null.
LMLIB64_API void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height,
                                    int32_t *channelCount, int32_t *bytesPerElement, int32_t *isFloat,
                                    double *timestamp);

// Copies the bytes of a binary node to the destination, which has room for `destinationSize` bytes. A negative size
// gives LmLibResultInvalidBufferSize. A size below lmLibGetCount gives LmLibResultBufferTooSmall, and nothing is
// copied. A null destination gives LmLibResultInvalidParameters unless there is nothing to copy. `bytesCopied` and
// `timestamp` may always be null.
LMLIB64_API void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize,
                                int32_t *bytesCopied, double *timestamp);

// Adds a line to the debug log, which keeps the newest lines, up to 64 KiB, in memory. A message that does not fit
// gives LmLibResultDebugMessageOverflow.
LMLIB64_API void lmLibWriteDebugMessage(int32_t *result, const char *message);

// Returns the debug log, oldest line first. Each line ends in a line feed. An empty log gives LmLibResultNoDebugData.
LMLIB64_API const char *lmLibGetDebugBuffer(int32_t *result);

// Waits for the running command, drops the commands that have not started, ends the library's thread and frees the tree
// and the debug log. Texts that were returned to the calling thread become invalid. The function may be called more
// than once, and the library may be used again afterwards, as if it had just been loaded. If the function is never
// called, the exit of the process waits for the running command and drops the others. On Windows, the exit does not
// wait: the system ends the running command.
LMLIB64_API void lmLibFinalize(int32_t *result);

#ifdef __cplusplus
}
#endif

#endif
