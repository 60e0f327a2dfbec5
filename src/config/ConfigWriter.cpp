#include "ConfigWriter.h"

namespace {

class Writer
{
public:
    QByteArray take() { return std::move(m_out); }

    void document(const BarConfig& config)
    {
        m_out.reserve(4096);
        Object object(*this);
        if (config.appSets) {
            object.key("appSets");
            array(*config.appSets, [this](const AppSet& set) { appSet(set); });
        }
        object.key("buttons");
        buttons(config.buttons);
        if (config.hotkey) {
            object.key("hotkey");
            string(*config.hotkey);
        }
    }

private:
    /// Writes "{" ... "}" and the separators between its members.
    class Object
    {
    public:
        explicit Object(Writer& writer)
            : m_writer(writer)
        {
            m_writer.m_out += '{';
            ++m_writer.m_depth;
        }
        ~Object()
        {
            --m_writer.m_depth;
            m_writer.newline();
            m_writer.m_out += '}';
        }
        Object(const Object&) = delete;
        Object& operator=(const Object&) = delete;

        void key(const char* name)
        {
            if (!m_first)
                m_writer.m_out += ',';
            m_first = false;
            m_writer.newline();
            m_writer.m_out += '"';
            m_writer.m_out += name;
            m_writer.m_out += "\" : ";
        }

    private:
        Writer& m_writer;
        bool m_first = true;
    };

    template<typename T, typename WriteElement>
    void array(const QList<T>& list, WriteElement writeElement)
    {
        m_out += '[';
        if (list.isEmpty()) {
            m_out += "\n\n";
            indent();
            m_out += ']';
            return;
        }
        ++m_depth;
        for (qsizetype i = 0; i < list.size(); ++i) {
            if (i > 0)
                m_out += ',';
            newline();
            writeElement(list.at(i));
        }
        --m_depth;
        newline();
        m_out += ']';
    }

    void buttons(const QList<ButtonSpec>& list)
    {
        array(list, [this](const ButtonSpec& spec) { button(spec); });
    }

    void button(const ButtonSpec& spec)
    {
        Object object(*this);
        object.key("action");
        string(spec.action);
        if (spec.argument) {
            object.key("argument");
            string(*spec.argument);
        }
        if (spec.children) {
            object.key("children");
            buttons(*spec.children);
        }
        if (spec.color) {
            object.key("color");
            string(*spec.color);
        }
        if (spec.iconPath) {
            object.key("iconPath");
            string(*spec.iconPath);
        }
        if (spec.locked) {
            object.key("locked");
            m_out += *spec.locked ? "true" : "false";
        }
        object.key("symbol");
        string(spec.symbol);
        object.key("title");
        string(spec.title);
    }

    void appSet(const AppSet& set)
    {
        Object object(*this);
        object.key("app");
        string(set.app);
        object.key("buttons");
        buttons(set.buttons);
        object.key("name");
        string(set.name);
    }

    void string(const QString& text)
    {
        m_out += '"';
        const qsizetype length = text.size();
        for (qsizetype i = 0; i < length; ++i) {
            const char16_t unit = text.at(i).unicode();
            if (QChar::isHighSurrogate(unit) && i + 1 < length && text.at(i + 1).isLowSurrogate()) {
                utf8(QChar::surrogateToUcs4(unit, text.at(i + 1).unicode()));
                ++i;
            } else if (QChar::isSurrogate(unit)) {
                // A lone half of a surrogate pair has no UTF-8 form (encoding it would write "?" and lose
                // it), but JSON can name it as an escape, which the reader turns back into the same half.
                escape(unit);
            } else {
                character(unit);
            }
        }
        m_out += '"';
    }

    void character(char16_t unit)
    {
        switch (unit) {
        case u'"':
            m_out += "\\\"";
            break;
        case u'\\':
            m_out += "\\\\";
            break;
        case u'/':
            m_out += "\\/";
            break;
        case u'\b':
            m_out += "\\b";
            break;
        case u'\f':
            m_out += "\\f";
            break;
        case u'\n':
            m_out += "\\n";
            break;
        case u'\r':
            m_out += "\\r";
            break;
        case u'\t':
            m_out += "\\t";
            break;
        case 0xfeff:
            // Qt's reader drops this character, a byte order mark, when it begins a text.
            escape(unit);
            break;
        default:
            if (unit < 0x20)
                escape(unit);
            else
                utf8(unit); // DEL and everything beyond ASCII go out raw
        }
    }

    void escape(char16_t unit)
    {
        static constexpr char hex[] = "0123456789abcdef";
        m_out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            m_out += hex[(unit >> shift) & 0xf];
    }

    void utf8(char32_t code)
    {
        if (code < 0x80) {
            m_out += char(code);
        } else if (code < 0x800) {
            m_out += char(0xc0 | (code >> 6));
            m_out += char(0x80 | (code & 0x3f));
        } else if (code < 0x10000) {
            m_out += char(0xe0 | (code >> 12));
            m_out += char(0x80 | ((code >> 6) & 0x3f));
            m_out += char(0x80 | (code & 0x3f));
        } else {
            m_out += char(0xf0 | (code >> 18));
            m_out += char(0x80 | ((code >> 12) & 0x3f));
            m_out += char(0x80 | ((code >> 6) & 0x3f));
            m_out += char(0x80 | (code & 0x3f));
        }
    }

    void newline()
    {
        m_out += '\n';
        indent();
    }

    void indent() { m_out.append(2 * m_depth, ' '); }

    QByteArray m_out;
    int m_depth = 0;
};

} // namespace

namespace ConfigWriter {

QByteArray write(const BarConfig& config)
{
    Writer writer;
    writer.document(config);
    return writer.take();
}

} // namespace ConfigWriter
