#pragma once
#include "tStatusRecord.h"

#include <cstdio>

namespace nZmHost
{

// zmhost's output: status records and events, as text lines (records in
// columns under a heading, events as "name key=value ...") or as JSON lines
// on one stream, and every record as a CSV line in a file of its own, if
// there is one. Every line is flushed at once.
class tOutput
{
public:
    // a_pCsv may be null. Neither stream is owned.
    tOutput(std::FILE* a_pLines, bool a_json, std::FILE* a_pCsv);

    // To the CSV file always, to the lines when a_show.
    void record(const tStatusRecord& a_record, bool a_show);
    void event(f64 a_seconds, const char* a_pName, const tFields& a_fields);

private:
    void writeJson(const tFields& a_fields);

    std::FILE* m_pLines;
    bool m_json;
    std::FILE* m_pCsv;
    bool m_headingWritten = false;
    bool m_csvHeaderWritten = false;
};

} // namespace nZmHost
