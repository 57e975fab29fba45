// Qt's stream writer and reader, with texts in Qt's own strings.

#include "documents.h"
#include "peers.h"
#include "scratch_log.h"

#include <QByteArray>
#include <QFile>
#include <QMap>
#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <functional>
#include <memory>

namespace
{

using bench::workload_t;

typedef QMap<QString, QString> string_map_t;

struct message_t
{
    QString type;
    QString severity;
    string_map_t attributes;
    string_map_t args;
    string_map_t elements;
};

string_map_t to_qt(const bench::string_pairs_t& texts)
{
    string_map_t result;
    for (const auto& [name, text] : texts)
        result.insert(QString::fromStdString(name), QString::fromStdString(text));
    return result;
}

message_t to_qt(const bench::plain_message_t& plain)
{
    return {QString::fromStdString(plain.type), QString::fromStdString(plain.severity),
            to_qt(plain.attributes), to_qt(plain.args), to_qt(plain.elements)};
}

std::size_t encode(const message_t& message)
{
    QByteArray text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(1);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("msg"));
    for (auto at = message.attributes.begin(); at != message.attributes.end(); ++at)
        writer.writeAttribute(at.key(), at.value());
    for (auto at = message.args.begin(); at != message.args.end(); ++at) {
        writer.writeStartElement(QStringLiteral("arg"));
        writer.writeAttribute(QStringLiteral("name"), at.key());
        writer.writeCharacters(at.value());
        writer.writeEndElement();
    }
    for (auto at = message.elements.begin(); at != message.elements.end(); ++at)
        writer.writeTextElement(at.key(), at.value());
    writer.writeTextElement(QStringLiteral("type"), message.type);
    writer.writeTextElement(QStringLiteral("severity"), message.severity);
    writer.writeEndElement();
    return static_cast<std::size_t>(text.size());
}

void read_child(QXmlStreamReader& reader, message_t& message)
{
    const QString name = reader.name().toString();
    if (name == QLatin1String("type")) {
        message.type = reader.readElementText();
    } else if (name == QLatin1String("severity")) {
        message.severity = reader.readElementText();
    } else if (name == QLatin1String("arg")) {
        const QString key = reader.attributes().value(QLatin1String("name")).toString();
        message.args.insert(key, reader.readElementText());
    } else {
        message.elements.insert(name, reader.readElementText());
    }
}

message_t read(QXmlStreamReader& reader)
{
    message_t message;
    for (const QXmlStreamAttribute& attribute : reader.attributes())
        message.attributes.insert(attribute.name().toString(), attribute.value().toString());
    while (reader.readNextStartElement())
        read_child(reader, message);
    return message;
}

std::size_t decode(const QByteArray& text)
{
    QXmlStreamReader reader(text);
    return reader.readNextStartElement() && !read(reader).type.isEmpty() ? 1 : 0;
}

std::size_t replay(const QString& name, const std::function<void(const message_t&)>& on_message)
{
    std::size_t count = 0;
    QFile file(name);
    bench::require(file.open(QIODevice::ReadOnly), "Qt cannot open the log");
    QXmlStreamReader reader(&file);
    reader.readNextStartElement();
    for (; reader.readNextStartElement(); ++count)
        on_message(read(reader));
    return count;
}

bench::candidate_t make_encode(const workload_t& workload)
{
    return {"Qt", [&](std::size_t all) -> bench::work_t {
                const auto make = [&](std::size_t index) {
                    return to_qt(*workload.plain()[index]);
                };
                return [messages = workload.make_items(all, make)](std::size_t count) {
                    return bench::sum_over(messages, count, encode);
                };
            }};
}

bench::candidate_t make_decode(const workload_t& workload)
{
    return {"Qt", [&](std::size_t all) -> bench::work_t {
                const auto documents = make_documents(workload, all);
                const auto make = [&](std::size_t index) {
                    return QByteArray::fromStdString(documents[index]);
                };
                return [copies = workload.make_items(all, make)](std::size_t count) {
                    return bench::sum_over(copies, count, decode);
                };
            }};
}

bench::candidate_t make_replay(const workload_t& workload)
{
    return {"Qt", [&](std::size_t all) -> bench::work_t {
                return [log = bench::make_log(workload, all)](std::size_t) {
                    std::size_t typed = 0;
                    return replay(
                        QString::fromStdString(log->name()),
                        [&](const message_t& message) { typed += message.type.isEmpty() ? 0 : 1; });
                };
            }};
}

const bool is_registered = bench::register_peer("encode", make_encode) &&
                           bench::register_peer("decode", make_decode) &&
                           bench::register_peer("replay", make_replay);

} // namespace
