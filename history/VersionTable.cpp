#include "history/VersionTable.h"

namespace quorvane::history {

namespace {

// Indexed by the stored number, whose meaning never changes.
constexpr VersionKind kinds[]
    = {VersionKind::action, VersionKind::undo, VersionKind::redo, VersionKind::foreign};
constexpr VersionState states[] = {VersionState::done, VersionState::underWay, VersionState::recovered};

template <typename Value, std::size_t count> std::int64_t stored(const Value (&values)[count], Value value)
{
    std::int64_t at = 0;
    while (values[at] != value)
        ++at;
    return at;
}

template <typename Value, std::size_t count> Value read(const Value (&values)[count], std::int64_t number)
{
    if (number < 0 || number >= static_cast<std::int64_t>(count))
        throw DatabaseError::damage("a version of an unknown kind or state");
    return values[number];
}

std::int64_t storedState(VersionState state)
{
    return stored(states, state);
}

} // namespace

void VersionTable::createTable(Database& database)
{
    database.execute(
        "CREATE TABLE version ("
        " number INTEGER PRIMARY KEY AUTOINCREMENT,"
        " time INTEGER NOT NULL, program TEXT, action TEXT,"
        " kind INTEGER NOT NULL, of_number INTEGER, before_number INTEGER, state INTEGER NOT NULL,"
        " rules INTEGER NOT NULL, added INTEGER NOT NULL, removed INTEGER NOT NULL,"
        " changed INTEGER NOT NULL,"
        " bytes INTEGER NOT NULL," // number in content
        " meant INTEGER)"); // likewise
}

std::int64_t VersionTable::insert(const NewVersion& version, VersionState state, std::int64_t time,
    std::optional<std::int64_t> before, const Contents& contents)
{
    Statement(m_database,
        "INSERT INTO version (time, program, action, kind, of_number, before_number, state,"
        " rules, added, removed, changed, bytes, meant) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        time, version.program, version.action, stored(kinds, version.kind), version.of, before,
        storedState(state), version.rules, version.added, version.removed, version.changed, contents.bytes,
        contents.meant)
        .run();
    return m_database.lastInserted();
}

std::vector<JournalVersion> VersionTable::versions(const std::set<std::int64_t>& unreadable)
{
    std::vector<JournalVersion> versions;
    Statement rows(m_database,
        "SELECT version.number, time, program, action, kind, of_number, before_number, state,"
        " rules, added, removed, changed, size, digest, bytes, meant"
        " FROM version LEFT JOIN content ON content.number = version.bytes ORDER BY version.number");
    while (rows.step()) {
        JournalVersion version;
        int column = 0;
        version.number = rows.integer(column++);
        version.time = rows.integer(column++);
        version.program = rows.optionalText(column++);
        version.action = rows.optionalText(column++);
        version.kind = read(kinds, rows.integer(column++));
        version.of = rows.optionalInteger(column++);
        version.before = rows.optionalInteger(column++);
        version.state = read(states, rows.integer(column++));
        version.rules = rows.count(column++);
        version.added = rows.count(column++);
        version.removed = rows.count(column++);
        version.changed = rows.count(column++);
        const bool hasContents = !rows.isNull(column);
        version.bytes = rows.count(column++);
        version.sha256 = rows.text(column++);
        const bool areBytesDamaged = unreadable.count(rows.integer(column++)) != 0;
        version.hasMeant = !rows.isNull(column);
        const bool isMeantDamaged = version.hasMeant && unreadable.count(rows.integer(column)) != 0;
        version.isReadable = hasContents && !areBytesDamaged && !isMeantDamaged;
        versions.push_back(std::move(version));
    }
    return versions;
}

std::optional<VersionTable::Newest> VersionTable::newest()
{
    Statement row(m_database, "SELECT number, bytes FROM version ORDER BY number DESC LIMIT 1");
    return row.step() ? std::optional(Newest{row.integer(0), row.integer(1)}) : std::nullopt;
}

std::optional<VersionTable::Contents> VersionTable::contentsOf(std::int64_t number)
{
    Statement row(m_database, "SELECT bytes, meant FROM version WHERE number = ?", number);
    return row.step() ? std::optional(Contents{row.integer(0), row.optionalInteger(1)}) : std::nullopt;
}

bool VersionTable::isAnyUnderWay()
{
    Statement row(
        m_database, "SELECT 1 FROM version WHERE state = ? LIMIT 1", storedState(VersionState::underWay));
    return row.step();
}

std::vector<DatedVersion> VersionTable::dates()
{
    std::vector<DatedVersion> dates;
    Statement rows(m_database, "SELECT number, time FROM version ORDER BY number");
    while (rows.step())
        dates.push_back({rows.integer(0), rows.integer(1)});
    return dates;
}

std::int64_t VersionTable::firstWithContentsFrom(std::int64_t content)
{
    Statement row(m_database,
        "SELECT coalesce(min(number), (SELECT max(number) FROM version)) FROM version WHERE bytes >= ?",
        content);
    row.step();
    return row.integer(0);
}

bool VersionTable::setState(std::int64_t number, VersionState state)
{
    Statement row(
        m_database, "UPDATE version SET state = ? WHERE number = ? RETURNING 1", storedState(state), number);
    const bool isThere = row.step();
    if (isThere)
        Statement(m_database, "UPDATE version SET state = ? WHERE number < ? AND state = ?",
            storedState(VersionState::recovered), number, storedState(VersionState::underWay))
            .run();
    return isThere;
}

bool VersionTable::abandon(std::int64_t number)
{
    Statement(m_database,
        "UPDATE version SET before_number = (SELECT before_number FROM version WHERE number = ?1 AND state = "
        "?2)"
        " WHERE before_number = ?1 AND EXISTS (SELECT 1 FROM version WHERE number = ?1 AND state = ?2)",
        number, storedState(VersionState::underWay))
        .run();
    Statement row(m_database, "DELETE FROM version WHERE number = ? AND state = ? RETURNING 1", number,
        storedState(VersionState::underWay));
    return row.step();
}

void VersionTable::forgetBefore(std::int64_t number)
{
    Statement(m_database,
        "DELETE FROM version WHERE number < ? AND state <> ? AND number < (SELECT max(number) FROM version)",
        number, storedState(VersionState::underWay))
        .run();
}

void VersionTable::forget(const std::vector<std::int64_t>& numbers)
{
    for (const std::int64_t number : numbers)
        Statement(m_database,
            "DELETE FROM version WHERE number = ? AND state <> ? AND number < (SELECT max(number) FROM "
            "version)",
            number, storedState(VersionState::underWay))
            .run();
}

} // namespace quorvane::history
