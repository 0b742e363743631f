#include "YamlInputBuffer.h"

#include "ImportReader.h"

YamlInputBuffer::YamlInputBuffer(const QByteArray& data, ImportReader& reader, int share)
    : m_data(data), m_reader(reader), m_share(share) {}

YamlInputBuffer::int_type YamlInputBuffer::underflow() {
    // Small enough that a cancel is noticed within a moment, large enough to cost nothing.
    constexpr qsizetype piece = 64 * 1024;
    if (m_handedOut >= m_data.size() || m_reader.cancelled())
        return traits_type::eof();
    // The parser only reads: the buffer is never written through these pointers.
    char* begin = const_cast<char*>(m_data.constData()) + m_handedOut;
    const qsizetype size = qMin(piece, m_data.size() - m_handedOut);
    setg(begin, begin, begin + size);
    m_handedOut += size;
    m_reader.report(m_handedOut * m_share, m_data.size() * 1000);
    return traits_type::to_int_type(*begin);
}
