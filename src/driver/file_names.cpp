#include "driver/file_names.h"

#include <QByteArray>
#include <QTextCodec>

namespace {

// A byte that is not part of valid UTF-8 stands as U+DC00 plus the byte.
// Such bytes are 0x80 and above, so their characters are U+DC80..U+DCFF:
// unpaired low surrogates, which valid UTF-8 never yields.
constexpr ushort escape_base = 0xDC00;

bool in_escape_range(QChar c) {
    return c.unicode() >= escape_base + 0x80 && c.unicode() <= escape_base + 0xFF;
}

// Whether text[i] is an escaped byte: in that range, and not the second half
// of a surrogate pair.
bool is_escaped_byte(QString const& text, int i) {
    return in_escape_range(text[i]) && !(i > 0 && text[i - 1].isHighSurrogate());
}

// The length of the valid UTF-8 sequence at `p`, of which `size` bytes are
// there; 0 when the bytes there are not valid UTF-8, -1 when they begin a
// valid sequence that ends beyond `size`.
int sequence_length(unsigned char const* p, int size) {
    unsigned char const lead = p[0];
    if (lead < 0x80)
        return 1;
    int length = 0;
    // The range of the second byte excludes overlong forms, surrogates and
    // code points beyond U+10FFFF.
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : low;
        high = lead == 0xED ? 0x9F : high;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : low;
        high = lead == 0xF4 ? 0x8F : high;
    } else {
        return 0;
    }
    for (int i = 1; i < length; ++i) {
        if (i == size)
            return -1;
        unsigned char const min = i == 1 ? low : 0x80;
        unsigned char const max = i == 1 ? high : 0xBF;
        if (p[i] < min || p[i] > max)
            return 0;
    }
    return length;
}

uint code_point(unsigned char const* p, int length) {
    static unsigned char const lead_bits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    uint point = p[0] & lead_bits[length];
    for (int i = 1; i < length; ++i)
        point = (point << 6) | (p[i] & 0x3F);
    return point;
}

// Decodes `bytes`; a valid sequence that `bytes` cuts short at its end is
// left in `pending` when that is given, and escaped otherwise.
QString decode(QByteArray const& bytes, QByteArray* pending) {
    auto const* p = reinterpret_cast<unsigned char const*>(bytes.constData());
    int const size = bytes.size();
    QString text;
    text.reserve(size);
    int i = 0;
    while (i < size) {
        int const length = sequence_length(p + i, size - i);
        if (length < 0 && pending) {
            *pending = bytes.mid(i);
            break;
        }
        if (length <= 0) {
            text += QChar(static_cast<ushort>(escape_base + p[i]));
            ++i;
            continue;
        }
        uint const point = code_point(p + i, length);
        if (QChar::requiresSurrogates(point)) {
            text += QChar(QChar::highSurrogate(point));
            text += QChar(QChar::lowSurrogate(point));
        } else {
            text += QChar(static_cast<ushort>(point));
        }
        i += length;
    }
    return text;
}

// The bytes that `text` stands for: escaped bytes as themselves, everything
// else as UTF-8.
QByteArray encode(QString const& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    int run = 0; // where the text since the last escaped byte starts
    for (int i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !is_escaped_byte(text, i))
            continue;
        bytes += QStringView(text).mid(run, i - run).toUtf8();
        if (i < text.size())
            bytes += static_cast<char>(text[i].unicode() - escape_base);
        run = i + 1;
    }
    return bytes;
}

// Qt's codec for the locale, which turns every path into bytes and back.
// Text in files does not come through here: each reader names its own
// encoding. The converter state carries an incomplete sequence (bytes, or a
// high surrogate) from one piece of a stream to the next.
class FileNameCodec : public QTextCodec {
public:
    QByteArray name() const override { return "UTF-8 with escaped bytes"; }
    int mibEnum() const override { return 0; }

protected:
    QString convertToUnicode(char const* in, int length, ConverterState* state) const override {
        QByteArray bytes;
        if (state)
            for (int i = 0; i < state->remainingChars; ++i)
                bytes += static_cast<char>(state->state_data[i]);
        bytes.append(in, length);
        QByteArray pending;
        QString const text = decode(bytes, state ? &pending : nullptr);
        if (state) {
            state->remainingChars = pending.size();
            for (int i = 0; i < pending.size(); ++i)
                state->state_data[i] = static_cast<unsigned char>(pending[i]);
        }
        return text;
    }

    QByteArray convertFromUnicode(QChar const* in, int length,
                                  ConverterState* state) const override {
        QString text;
        if (state && state->remainingChars)
            text += QChar(static_cast<ushort>(state->state_data[0]));
        text.append(in, length);
        if (state) {
            // A pair may be split between two pieces.
            QChar const last = text.isEmpty() ? QChar() : text.at(text.size() - 1);
            bool const split = last.isHighSurrogate();
            state->remainingChars = split ? 1 : 0;
            state->state_data[0] = split ? last.unicode() : 0;
            if (split)
                text.chop(1);
        }
        return encode(text);
    }
};

} // namespace

void keep_file_name_bytes() {
    // Qt takes ownership of every codec made.
    QTextCodec::setCodecForLocale(new FileNameCodec);
}

QString decoded_file_name(QString const& file_name) {
    for (int i = 0; i < file_name.size(); ++i)
        if (is_escaped_byte(file_name, i))
            return QTextCodec::codecForName("Windows-1252")->toUnicode(encode(file_name));
    return file_name;
}
