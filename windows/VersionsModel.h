#pragma once

#include "history/JournalVersion.h"

#include <QAbstractTableModel>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

namespace quorvane::windows {

// The versions of a file as a Qt table, newest first: all, or the results of a search. User interface thread
// only.
class VersionsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum class Column { number, time, action, program, count, added, removed, changed };
    static constexpr int columns = 8;

    using QAbstractTableModel::QAbstractTableModel;

    // Newest first. Rows that stay are not reset.
    void setVersions(std::vector<history::JournalVersion> versions);
    // The title of the column that counts the items of a version: "Rules".
    void setCounted(const QString& name);
    // Shows only versions whose time, action, program or number contain this text, and those added by
    // addFound(). Empty for all.
    void setSearch(const QString& text);
    void addFound(std::int64_t version);

    const std::vector<history::JournalVersion>& versions() const { return m_versions; }
    const history::JournalVersion& versionAt(int row) const
    {
        return m_versions[m_rows[static_cast<std::size_t>(row)]];
    }
    // None when it is not shown.
    std::optional<int> rowOf(std::int64_t version) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<std::size_t> wantedRows(const std::vector<history::JournalVersion>& versions) const;
    bool isWanted(const history::JournalVersion& version) const;
    void showRows(std::vector<std::size_t> rows);

    std::vector<history::JournalVersion> m_versions;
    std::vector<std::size_t> m_rows; // indexes in m_versions, ascending
    QString m_counted;
    QString m_search;
    std::unordered_set<std::int64_t> m_found;
};

// The local time of a version, to the second.
QString versionTime(const history::JournalVersion& version);
// The action, and anything unusual about the version.
QString versionAction(const history::JournalVersion& version);

} // namespace quorvane::windows
