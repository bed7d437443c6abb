#include "windows/KeptDrafts.h"

#include "platform/Log.h"
#include "windows/QtText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStringList>

#include <optional>
#include <utility>

#include <unistd.h>

// A draft's file is a JSON object: the format's number, the rules file, the kind of rule, the original rule,
// and the contents of its editor. A null text of the rule is null; a code without an item in the control is
// missing.

namespace quorvane::windows {

namespace {

constexpr int format = 1;
constexpr qint64 longestFile = qint64(1) << 20;
constexpr int mostFiles = 20;

QJsonValue jsonOf(const rules::NullableText& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(toQt(text.view()));
}

rules::NullableText textIn(const QJsonValue& value)
{
    return value.isString() ? rules::NullableText(fromQt(value.toString()))
                            : rules::NullableText(std::nullopt);
}

template <class Fields> QJsonObject jsonOfCommonFields(const Fields& fields)
{
    return {{QStringLiteral("type"), fields.policyType}, {QStringLiteral("path"), jsonOf(fields.path)},
        {QStringLiteral("process"), jsonOf(fields.processName)}, {QStringLiteral("tag"), jsonOf(fields.tag)},
        {QStringLiteral("operations"), static_cast<qint64>(fields.operations)},
        {QStringLiteral("flags"), static_cast<qint64>(fields.flags)}};
}

QJsonObject jsonOfFields(const rules::WatchRuleFields& fields)
{
    return jsonOfCommonFields(fields);
}

QJsonObject jsonOfFields(const rules::PolicyRuleFields& fields)
{
    QJsonObject json = jsonOfCommonFields(fields);
    json[QStringLiteral("class")] = fields.policyClass;
    json[QStringLiteral("constraint")] = jsonOf(fields.constraint);
    json[QStringLiteral("created")] = static_cast<qint64>(fields.created);
    return json;
}

template <class Fields> Fields commonFieldsIn(const QJsonObject& json)
{
    Fields fields;
    fields.policyType = json[QStringLiteral("type")].toInt();
    fields.path = textIn(json[QStringLiteral("path")]);
    fields.processName = textIn(json[QStringLiteral("process")]);
    fields.tag = textIn(json[QStringLiteral("tag")]);
    fields.operations = static_cast<std::uint32_t>(json[QStringLiteral("operations")].toInteger());
    fields.flags = static_cast<std::uint32_t>(json[QStringLiteral("flags")].toInteger());
    return fields;
}

rules::RuleRef ruleIn(const QJsonObject& json, bool isWatchRule)
{
    if (isWatchRule)
        return recordOf(makeRuleValue(commonFieldsIn<rules::WatchRuleFields>(json)));
    auto fields = commonFieldsIn<rules::PolicyRuleFields>(json);
    fields.policyClass = json[QStringLiteral("class")].toInt();
    fields.constraint = textIn(json[QStringLiteral("constraint")]);
    fields.created = static_cast<std::uint64_t>(json[QStringLiteral("created")].toInteger());
    return recordOf(makeRuleValue(std::move(fields)));
}

QJsonObject jsonOfDraft(const workflow::RuleDraft& draft)
{
    QJsonObject json{{QStringLiteral("path"), toQt(draft.path)},
        {QStringLiteral("process"), toQt(draft.processName)},
        {QStringLiteral("constraint"), toQt(draft.constraint)},
        {QStringLiteral("operations"), static_cast<qint64>(draft.operations)}};
    if (draft.policyClass)
        json[QStringLiteral("class")] = *draft.policyClass;
    if (draft.policyType)
        json[QStringLiteral("type")] = *draft.policyType;
    return json;
}

workflow::RuleDraft draftIn(const QJsonObject& json)
{
    const auto code = [&json](const QString& key) {
        return json.contains(key) ? std::optional<std::int32_t>(json[key].toInt()) : std::nullopt;
    };
    return {.policyClass = code(QStringLiteral("class")),
        .policyType = code(QStringLiteral("type")),
        .path = fromQt(json[QStringLiteral("path")].toString()),
        .processName = fromQt(json[QStringLiteral("process")].toString()),
        .constraint = fromQt(json[QStringLiteral("constraint")].toString()),
        .operations = static_cast<std::uint32_t>(json[QStringLiteral("operations")].toInteger())};
}

QString watchKind()
{
    return QStringLiteral("watch");
}
QString policyKind()
{
    return QStringLiteral("policy");
}

QByteArray textForFile(const KeptDraft& kept, const QString& rulesFile)
{
    const bool isWatchRule = policyRuleIn(kept.rule) == nullptr;
    return QJsonDocument(
        QJsonObject{{QStringLiteral("format"), format}, {QStringLiteral("rulesFile"), rulesFile},
            {QStringLiteral("kind"), isWatchRule ? watchKind() : policyKind()},
            {QStringLiteral("rule"),
                visitRule(kept.rule, [](const auto& record) { return jsonOfFields(record.fields()); })},
            {QStringLiteral("draft"), jsonOfDraft(kept.draft)}})
        .toJson();
}

// None if the text is not a draft of that rules file.
std::optional<KeptDraft> draftInText(const QByteArray& text, const QString& rulesFile)
{
    const QJsonObject json = QJsonDocument::fromJson(text).object();
    const QString kind = json[QStringLiteral("kind")].toString();
    if (json[QStringLiteral("format")].toInt() != format
        || json[QStringLiteral("rulesFile")].toString() != rulesFile
        || (kind != watchKind() && kind != policyKind()))
        return std::nullopt;
    return KeptDraft{ruleIn(json[QStringLiteral("rule")].toObject(), kind == watchKind()),
        draftIn(json[QStringLiteral("draft")].toObject())};
}

// Empty if it is not a regular file or too long.
QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    const QFileInfo info(path);
    if (!info.isFile() || info.isSymLink() || info.size() > longestFile || !file.open(QIODevice::ReadOnly))
        return {};
    return file.read(longestFile);
}

// Names sort in the order in which the drafts were stored.
QString newFileName()
{
    static int number = 0;
    constexpr int digits = 4;
    return QStringLiteral("/draft-%1-%2-%3.json")
        .arg(QDateTime::currentMSecsSinceEpoch())
        .arg(QCoreApplication::applicationPid())
        .arg(++number, digits, 10, QLatin1Char('0'));
}

} // namespace

KeptDrafts::KeptDrafts(QString folder, std::string rulesFile, platform::Log& log)
    : m_folder(std::move(folder))
    , m_rulesFile(toQt(rulesFile))
    , m_log(log)
{
}

void KeptDrafts::keep(const KeptDraft& draft)
{
    const QByteArray text = textForFile(draft, m_rulesFile);
    if (text.size() > longestFile || !makeFolder()) {
        m_log.write("could not keep an unsaved rule in '" + fromQt(m_folder) + "'");
        return;
    }
    makeRoom();
    QSaveFile file(m_folder + newFileName());
    // Still empty, so that no other user can read the contents even for a moment.
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(text) != text.size() || !file.commit())
        m_log.write("could not keep an unsaved rule: " + fromQt(file.errorString()));
}

// False also if root would leave files in the home of another user.
bool KeptDrafts::makeFolder() const
{
    if (m_folder.isEmpty())
        return false;
    QFileInfo nearest(m_folder);
    while (!nearest.exists() && !nearest.isRoot())
        nearest.setFile(nearest.path());
    if (nearest.ownerId() != geteuid())
        return false;
    constexpr QFile::Permissions forOwnerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    return QDir().mkpath(QFileInfo(m_folder).path())
        && (QFileInfo(m_folder).isDir() || QDir().mkdir(m_folder, forOwnerOnly));
}

void KeptDrafts::makeRoom() const
{
    const QStringList kept = files();
    for (qsizetype oldest = 0; oldest + mostFiles <= kept.size(); ++oldest) {
        m_log.write("dropping the oldest of " + std::to_string(kept.size()) + " unsaved rules");
        QFile::remove(kept[oldest]);
    }
}

// The oldest first.
QStringList KeptDrafts::files() const
{
    QStringList paths;
    if (m_folder.isEmpty()) // it would mean the working directory
        return {};
    const auto found = QDir(m_folder).entryInfoList(
        {QStringLiteral("draft-*.json")}, QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo& file : found)
        paths.append(file.filePath());
    return paths;
}

std::vector<std::pair<QString, KeptDraft>> KeptDrafts::readAll() const
{
    std::vector<std::pair<QString, KeptDraft>> drafts;
    for (const QString& path : files()) {
        if (auto draft = draftInText(contentsOf(path), m_rulesFile))
            drafts.emplace_back(path, std::move(*draft));
    }
    return drafts;
}

std::size_t KeptDrafts::count() const
{
    return readAll().size();
}

std::vector<KeptDraft> KeptDrafts::take()
{
    std::vector<KeptDraft> drafts;
    for (auto& [path, draft] : readAll()) {
        if (QFile::remove(path)) // else another process has taken it
            drafts.push_back(std::move(draft));
    }
    return drafts;
}

} // namespace quorvane::windows
