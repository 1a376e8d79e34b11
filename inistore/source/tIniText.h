#pragma once
// The initialisation-file store: an ini file held in memory as sections of
// tag and value pairs, read from a file and written back through a temporary
// file that replaces the old one only when it is complete and on disk.
//
// Plain functions with integer results. A result of 0 or above is a success;
// a get yields 1 when it found a value and 0 when the section or the entry is
// absent or its value is blank. Nothing here reports or logs.
//
// Names of sections and tags compare without regard to case, after leading
// white space. A text belongs to one thread; the file is not locked.
#include "orvtarn/quarks/tTypes.h"

struct tIniText;

// The result codes.
enum : i32
{
    kIniSuccess = 0,
    kIniTagTooLong = -2,            // the tag leaves no room for a value on a line
    kIniMultiByteEncoding = -3,     // the file begins with a UTF-16 or UTF-32 mark
    kIniTemporaryNotCreated = -5,   // the temporary file cannot be created
    kIniEmptyName = -6,             // empty section name or tag in a put
    kIniOutOfMemory = -12,          // also the result of every call on a null text
    kIniNotWritable = -13,          // the target cannot be written or replaced
    kIniNoFile = -22,               // no file name, or the file does not exist
    kIniWriteFailed = -28,          // a write, flush or sync failed
    kIniCannotOpen = -5001,         // the file exists but cannot be opened
    kIniReadFailed = -5002,         // a read failed
    kIniNoTemporaryName = -5003,    // no free temporary name in 1000 tries
    kIniTemporaryNotOpened = -5004, // the temporary file cannot be opened
    kIniNotUnsigned32 = -5022,      // the value is no unsigned 32-bit number
    kIniNotFloating = -5023,        // the value is no floating number
    kIniNotBoolean = -5024          // the value is no boolean
};

// An empty text; null when memory is exhausted.
[[nodiscard]] tIniText* iniNew();
// Frees the text and all it holds. Null is ignored.
void iniDispose(tIniText* a_pText);

// Replaces the text by the file's content. A failure before the content is
// read (no file, no access, a UTF-16 or UTF-32 mark) leaves the text as it
// was; a later one leaves it as far as the reading got. Lines that do not
// parse are skipped, and the first one's number is kept (iniGetFirstBadLine).
[[nodiscard]] i32 iniReadFromFile(tIniText* a_pText, const char* a_pPath);
// Writes the text to a temporary file "ini$$<n>.TMP" beside a_pPath, syncs it
// to disk, gives it the old file's permissions and renames it over a_pPath,
// then syncs the directory. On any failure the old file is left as it was and
// the temporary file is removed; the text in memory never changes. After a
// failed read or write errno holds the cause.
[[nodiscard]] i32 iniWriteToFile(tIniText* a_pText, const char* a_pPath);

// Numbers: white space, at most one '+', decimal digits, white space.
[[nodiscard]] i32 iniGetU32(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                            u32* a_pValue);
// "Inf", "+Inf" and "-Inf" in any case, or a text that strtod takes whole
// without a range error.
[[nodiscard]] i32 iniGetF64(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                            f64* a_pValue);
// "True" gives 1 and "False" 0, in any case.
[[nodiscard]] i32 iniGetBool(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                             i32* a_pValue);
// The value with its escapes undone, cut to a_size - 1 characters; the empty
// text when nothing was found. A quoted value is found even when empty.
[[nodiscard]] i32 iniGetString(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                               char* a_pBuffer, i32 a_size);

// Puts add a missing section at the end of the text and a missing tag at the
// end of its section; an existing tag gets the new value. An empty or null
// section name or tag gives kIniEmptyName.
[[nodiscard]] i32 iniPutU32(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                            u32 a_value);
// Escaped and quoted; a null value counts as empty.
[[nodiscard]] i32 iniPutString(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                               const char* a_pValue);

// The number of the first line of the last read that did not parse; -1 if none.
i32 iniGetFirstBadLine(const tIniText* a_pText);
