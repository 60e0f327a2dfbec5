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
        static constexpr char hex[] = "0123456789abcdef";
        m_out += '"';
        const QByteArray utf8 = text.toUtf8();
        for (const char c : utf8) {
            switch (c) {
            case '"':
                m_out += "\\\"";
                break;
            case '\\':
                m_out += "\\\\";
                break;
            case '/':
                m_out += "\\/";
                break;
            case '\b':
                m_out += "\\b";
                break;
            case '\f':
                m_out += "\\f";
                break;
            case '\n':
                m_out += "\\n";
                break;
            case '\r':
                m_out += "\\r";
                break;
            case '\t':
                m_out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    m_out += "\\u00";
                    m_out += hex[(c >> 4) & 0xf];
                    m_out += hex[c & 0xf];
                } else {
                    m_out += c; // DEL and every byte of a multi-byte sequence go out raw
                }
            }
        }
        m_out += '"';
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
