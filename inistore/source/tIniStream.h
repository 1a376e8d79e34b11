#pragma once
// The store's text form on an open stream: what the file functions do between
// opening and closing a file.
#include "tIniModel.h"

#include <cstdio>

namespace nIniStream
{

// Checks the byte order mark, then replaces the text by the stream's content.
i32 read(tIniText& a_rText, std::FILE* a_pFile);
// Writes every section; kIniTagTooLong, kIniOutOfMemory or kIniWriteFailed
// when it stops early.
i32 write(const tIniText& a_rText, std::FILE* a_pFile);

} // namespace nIniStream
