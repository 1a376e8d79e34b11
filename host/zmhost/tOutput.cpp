#include "tOutput.h"

#include <cinttypes>
#include <cmath>
#include <cstring>

namespace nZmHost
{
namespace
{

enum class tForm
{
    kText,
    kJson,
    kCsv
};

// A string as a JSON string, quotes included.
std::string quoted(const std::string& a_text)
{
    std::string result = "\"";
    for (const char character : a_text)
    {
        if (character == '"' || character == '\\')
        {
            result += '\\';
            result += character;
        }
        else if (static_cast<unsigned char>(character) < 0x20)
        {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(character));
            result += escape;
        }
        else
        {
            result += character;
        }
    }
    return result + "\"";
}

struct tFormatter
{
    tForm m_form;

    std::string operator()(std::monostate) const
    {
        return m_form == tForm::kText ? "-" : (m_form == tForm::kJson ? "null" : "");
    }
    std::string operator()(i64 a_value) const { return std::to_string(a_value); }
    std::string operator()(f64 a_value) const
    {
        if (!std::isfinite(a_value))
        {
            return (*this)(std::monostate());
        }
        char text[40];
        std::snprintf(text, sizeof(text), "%.3f", a_value);
        return text;
    }
    std::string operator()(bool a_value) const
    {
        switch (m_form)
        {
        case tForm::kText:
            return a_value ? "yes" : "no";
        case tForm::kJson:
            return a_value ? "true" : "false";
        default:
            return a_value ? "1" : "0";
        }
    }
    std::string operator()(const std::string& a_value) const
    {
        if (m_form == tForm::kJson)
        {
            return quoted(a_value);
        }
        if (m_form == tForm::kCsv && a_value.find_first_of(",\"\n") != std::string::npos)
        {
            std::string doubled;
            for (const char character : a_value)
            {
                doubled += character == '"' ? "\"\"" : std::string(1, character);
            }
            return "\"" + doubled + "\"";
        }
        return a_value;
    }
};

std::string format(tForm a_form, const tValue& a_value)
{
    return std::visit(tFormatter{a_form}, a_value);
}

void finishLine(std::FILE* a_pFile, std::string a_line)
{
    a_line.erase(a_line.find_last_not_of(' ') + 1);
    std::fputs(a_line.c_str(), a_pFile);
    std::fputc('\n', a_pFile);
    std::fflush(a_pFile);
}

} // namespace

tOutput::tOutput(std::FILE* a_pLines, bool a_json, std::FILE* a_pCsv)
    : m_pLines(a_pLines), m_json(a_json), m_pCsv(a_pCsv)
{
}

void tOutput::record(const tStatusRecord& a_record, bool a_show)
{
    const tFields fields = fieldsOf(a_record);
    if (m_pCsv != nullptr)
    {
        std::string header;
        std::string line;
        for (const tField& field : fields)
        {
            const char* const pSeparator = &field == &fields.front() ? "" : ",";
            header += pSeparator + std::string(field.m_pName);
            line += pSeparator + format(tForm::kCsv, field.m_value);
        }
        if (!m_csvHeaderWritten)
        {
            finishLine(m_pCsv, header);
            m_csvHeaderWritten = true;
        }
        finishLine(m_pCsv, line);
    }
    if (!a_show)
    {
        return;
    }
    if (m_json)
    {
        writeJson(fields);
        return;
    }
    std::string heading;
    std::string line;
    for (const tField& field : fields)
    {
        if (field.m_width == 0)
        {
            continue;
        }
        // Texts to the left of their column, numbers to the right.
        const bool left = std::holds_alternative<std::string>(field.m_value) ||
                          std::holds_alternative<bool>(field.m_value);
        const char* const pFormat = left ? "%-*s" : "%*s";
        char cell[64];
        std::snprintf(cell, sizeof(cell), pFormat, field.m_width, field.m_pHeading);
        heading += cell;
        std::snprintf(cell, sizeof(cell), pFormat, field.m_width,
                      format(tForm::kText, field.m_value).c_str());
        line += cell;
        heading += "  ";
        line += "  ";
    }
    if (!m_headingWritten)
    {
        finishLine(m_pLines, heading);
        m_headingWritten = true;
    }
    finishLine(m_pLines, line);
}

void tOutput::event(f64 a_seconds, const char* a_pName, const tFields& a_fields)
{
    tFields fields{{"t_s", "", 0, a_seconds}, {"event", "", 0, std::string(a_pName)}};
    fields.insert(fields.end(), a_fields.begin(), a_fields.end());
    if (m_json)
    {
        writeJson(fields);
        return;
    }
    char opening[64];
    std::snprintf(opening, sizeof(opening), "%9.3f  %s", a_seconds, a_pName);
    std::string line = opening;
    for (const tField& field : a_fields)
    {
        line += std::string(" ") + field.m_pName + "=" + format(tForm::kText, field.m_value);
    }
    finishLine(m_pLines, line);
}

void tOutput::writeJson(const tFields& a_fields)
{
    std::string line = "{";
    for (const tField& field : a_fields)
    {
        line += (line.size() > 1 ? "," : "") + quoted(field.m_pName) + ":" +
                format(tForm::kJson, field.m_value);
    }
    finishLine(m_pLines, line + "}");
}

} // namespace nZmHost
