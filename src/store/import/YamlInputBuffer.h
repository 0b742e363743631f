#pragma once

#include <QByteArray>
#include <streambuf>

class ImportReader;

// Hands a YAML file's bytes to the parser a piece at a time, so that parsing a large file
// reports how far it got and stops when the import is cancelled: once it is, the parser is
// told the input has ended, and whatever it makes of the rest is thrown away by the reader.
// Parsing is reported as `share` thousandths of the reader's whole work.
class YamlInputBuffer : public std::streambuf {
public:
    YamlInputBuffer(const QByteArray& data, ImportReader& reader, int share);

protected:
    int_type underflow() override;

private:
    const QByteArray& m_data;
    ImportReader& m_reader;
    int m_share;
    qsizetype m_handedOut = 0;
};
