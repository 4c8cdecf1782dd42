/*
 * LmLib64: a camera library driven through one tree of nodes.
 *
 * The tree is a JSON-like document: objects with named children, arrays with numbered children, and
 * leaves that hold a number, a string, a boolean, null or a block of binary data. A client reads and
 * writes nodes, and runs commands by writing to nodes below /Execute. Nothing here opens a window, and
 * nothing here is specific to the program that uses it: another library with the same functions can take
 * this one's place without a rebuild.
 *
 * Rules that hold for every function
 *
 * Paths. The root is the empty text. A child by name is "/" and the name; an element of an array is "/",
 *   a backslash and the index in decimal without padding: /Execute/1/Parameters/Patterns/\0. Names are not
 *   escaped; a name is not empty and holds neither "/" nor a backslash. Anything else is
 *   LmLibResultItemPathInvalid. A path has at most LMLIB_MAXIMUM_DEPTH parts
 *   (LmLibResultNestingLimitReached beyond).
 * Writing. A write replaces whatever the node held. Writing below an absent node creates the objects and
 *   arrays on the way. An array index may be at most one past the end (LmLibResultItemPathInvalid beyond).
 *   A leaf has no children, an object has none by index and an array none by name: reading or writing there
 *   is LmLibResultItemTypeNotCompatible.
 * Reading. Reading an absent node is LmLibResultItemInexistent; reading a node of another type is
 *   LmLibResultItemTypeNotCompatible.
 * Protected nodes. The root, /Path and every node below /Path belong to the library: writing or erasing
 *   one is LmLibResultItemProtected. /Path/Manual is the folder of the manual and
 *   /Path/Application/LmView the file of the viewer, both absolute and whether or not they exist.
 * Results. Every function takes first a pointer to a result code, which it always sets; the pointer may
 *   be null. After any code but LmLibResultOperationSucceeded the tree is as it was, and what the function
 *   returns and passes out through pointers is 0 or null. A path or text that is null counts as the empty text.
 * Texts. Narrow and NUL-terminated. Texts are kept as the bytes they are; file names among them are in
 *   the system's local 8-bit encoding, catalogue names in UTF-8. Returned texts belong to the library and
 *   stay valid until the calling thread's next call into the library.
 * Flags and booleans are int32_t; any non-zero value is true, and the library returns 1.
 * Threads. Every function may be called from any thread at any time. Commands run one after the other on
 *   a thread of the library's own.
 * Child processes. A child made by fork() starts with a new library, whatever other threads were doing: its tree
 *   has nothing but /Path, and no command runs in it. The parent is not affected. Texts returned to the thread that
 *   forked stay valid in the child until its next call.
 * Life. The library is ready on the first call and needs no initialising; see lmLibFinalize.
 *
 * Commands
 *
 * A slot is a child of /Execute, usually made with lmLibMakeUniqueItem. Write the parameters below the
 * slot's "Parameters", then the command's name as a string to its "Command": the command starts, with the
 * parameters as they are then. When it has finished, "Result" holds what it returned and "Command" turns
 * to null; wait for that with lmLibWaitForType. An earlier "Result" goes when the command starts. A failed command,
 * or one that does not exist, leaves "Result"/"ErrorSymbol", "Result"/"ErrorText" and the command's name in
 * "Result"/"Execute"/"Command". Writing or erasing "Command" while the slot's command has not finished is
 * LmLibResultCommandRunning; erasing or replacing the slot then is safe and drops what the command returns.
 * Elements of an array are no slots.
 */
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

/** The greatest number of parts in a path, and so the greatest depth of the tree. */
#define LMLIB_MAXIMUM_DEPTH 64

/** The greatest number of bytes in a text that lmLibSetJson reads. */
#define LMLIB_MAXIMUM_JSON_SIZE 16777216

/** Result codes; the names follow the codes' symbols. */
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

/** Item types, as lmLibGetType returns them and lmLibWaitForType awaits them. */
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

/** The text of a string node. */
LMLIB64_API const char *lmLibGetString(int32_t *result, const char *path);

/** Makes the node a string. Written to a slot's "Command", it starts the command of that name. */
LMLIB64_API void lmLibSetString(int32_t *result, const char *path, const char *text);

/** The value of a number node that is a whole number in the range of int32_t; LmLibResultItemTypeNotCompatible. */
LMLIB64_API int32_t lmLibGetInt(int32_t *result, const char *path);

/** Makes the node a number. */
LMLIB64_API void lmLibSetInt(int32_t *result, const char *path, int32_t value);

/** The value of a number node. */
LMLIB64_API double lmLibGetDouble(int32_t *result, const char *path);

/** Makes the node a number; infinities and not-a-number are kept, and are null in JSON. */
LMLIB64_API void lmLibSetDouble(int32_t *result, const char *path, double value);

/** The value of a boolean node, 0 or 1. */
LMLIB64_API int32_t lmLibGetBool(int32_t *result, const char *path);

/** Makes the node a boolean. */
LMLIB64_API void lmLibSetBool(int32_t *result, const char *path, int32_t value);

/** Makes the node null. */
LMLIB64_API void lmLibSetNull(int32_t *result, const char *path);

/**
 * The node and all below it as JSON text in UTF-8 (bytes that are not UTF-8 are replaced by U+FFFD).
 * numberPrecision is the number of significant digits of a number that is not whole, 1 to 18; 0 is the
 * fewest that read back to the same value (LmLibResultInvalidParameters for any other). A number below 1e-5
 * or from 1e17 on has an exponent with allowScientificFormat, and none has one without. A binary node
 * becomes an object with its format and its "ByteCount".
 */
LMLIB64_API const char *lmLibGetJson(int32_t *result, const char *path, int32_t prettyPrint, int32_t numberPrecision,
                                     int32_t allowScientificFormat);

/**
 * Replaces the node by what the JSON text in UTF-8 says; starts no command.
 * LmLibResultCouldNotInterpretJsonText where it is no JSON, where it is longer than LMLIB_MAXIMUM_JSON_SIZE,
 * where a number is beyond the range of double, a text holds U+0000 or a name is none that a path can hold.
 */
LMLIB64_API void lmLibSetJson(int32_t *result, const char *path, const char *json);

/** The node's type, an LmLibType. An absent node is LmLibTypeAbsent with LmLibResultItemInexistent. */
LMLIB64_API int32_t lmLibGetType(int32_t *result, const char *path);

/** The number of children of an object or array; the number of bytes of a binary node. */
LMLIB64_API int32_t lmLibGetCount(int32_t *result, const char *path);

/** The node's own name: the last part of its path, without a backslash; empty for the root. */
LMLIB64_API const char *lmLibGetName(int32_t *result, const char *path);

/** Removes the node and all below it; the elements behind an erased element of an array move up. */
LMLIB64_API void lmLibErase(int32_t *result, const char *path);

/**
 * Makes a new empty object below the parent and returns its path. Its name is baseName, an underscore where
 * that ends in a digit, and a number; no child of the parent has it, and no item made here had it since the
 * library was last finalised. LmLibResultItemMaximumUniqueCountReached when the numbers are used up.
 */
LMLIB64_API const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName);

/**
 * Waits until the node has the type. There is no time limit. Without waitForChange the node is looked at
 * only once, and another type is LmLibResultTimeout. A node that is absent, or goes away while waited for,
 * is LmLibResultItemInexistent (unless LmLibTypeAbsent is awaited); a number that is no LmLibType is
 * LmLibResultInvalidParameters; lmLibFinalize ends every wait with LmLibResultOperationCanceled.
 */
LMLIB64_API void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange);

/**
 * The format of a binary node: width and height in elements, channels per element, interleaved, rows from
 * the top and packed without padding, bytes per channel value, whether those are floating point, and the
 * time it was made in seconds since 1970. Every pointer may be null.
 */
LMLIB64_API void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height,
                                    int32_t *channelCount, int32_t *bytesPerElement, int32_t *isFloat,
                                    double *timestamp);

/**
 * Copies a binary node's bytes to the destination, which holds destinationSize bytes. The size must not be
 * negative (LmLibResultInvalidBufferSize) nor less than lmLibGetCount (LmLibResultBufferTooSmall; nothing
 * is copied). The destination may be null where there is nothing to copy (LmLibResultInvalidParameters),
 * bytesCopied and timestamp always.
 */
LMLIB64_API void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize,
                                int32_t *bytesCopied, double *timestamp);

/**
 * Adds a line to the debug log, which keeps the newest 64 KiB in memory, in whole lines. A message that does not
 * fit is LmLibResultDebugMessageOverflow.
 */
LMLIB64_API void lmLibWriteDebugMessage(int32_t *result, const char *message);

/** The debug log, oldest line first, each ended by a line feed; LmLibResultNoDebugData when it is empty. */
LMLIB64_API const char *lmLibGetDebugBuffer(int32_t *result);

/**
 * Waits for the command that is running, drops those that have not begun, ends the library's thread and
 * frees the tree and the debug log. Safe to call twice; the library may be used again afterwards and is
 * then as new. Where it is not called, the exit of the process waits for the command that is running and
 * drops the others. Texts returned earlier to the calling thread become invalid.
 */
LMLIB64_API void lmLibFinalize(int32_t *result);

#ifdef __cplusplus
}
#endif

#endif
