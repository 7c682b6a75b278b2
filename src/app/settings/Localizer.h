#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

/// Turns a key into text in the chosen language, which may change at any time.
///
/// Texts lie in a folder "Vantle_Vantle.bundle" with one folder "<code>.lproj"
/// per language, each with a UTF-8 "Localizable.strings". A text that a table
/// lacks shows as its key. Main thread, except that text() of a copy is free.
class Localizer
{
public:
    /// bundle: the folder itself. languages: the desktop's languages in the
    /// user's order, as BCP 47 tags ("de-AT", "zh-TW").
    Localizer(QString bundle, const QStringList &languages);

    /// The bundle's folder in the first of the places that has one; none if no
    /// place does.
    static std::optional<QString> findBundle(const QStringList &places);

    /// The chosen language's code, or "system".
    void setOverride(const QString &code);

    /// Of the languages that the bundle has.
    const QStringList &codes() const { return m_codes; }

    /// The language in force: the override, else the best match for the
    /// desktop's languages, "en" if there is none.
    QString currentCode() const;

    /// Without arguments the text stands as it is, "%" included. With arguments
    /// it is a format that knows %@, %lld, %d, %% and positions ("%2$@"); a
    /// conversion without a fitting argument stays as it is.
    QString text(const QString &key) const;
    QString text(const QString &key, const QVariantList &arguments) const;

private:
    using Table = QHash<QString, QString>;

    const QString &resolvedCode() const;
    const Table &table(const QString &code) const;

    QString m_bundle;
    QStringList m_codes;
    QString m_systemCode;
    std::optional<QString> m_override;
    mutable QHash<QString, Table> m_tables; // Read once each.
};
