// The template file of one user and one scanner model: an INI file, one group a template, read and
// written through QSettings. No widgets; nothing here is shown to the user.
#pragma once

#include "templates/template_record.h"

#include <QString>
#include <QStringList>

#include <mutex>

/// Only saving takes the mutex; reading, listing and deleting belong to the GUI thread. A save or a
/// removal replaces the file as a whole: after a crash or a full disk it is the old one or the new
/// one.
class TemplateStore
{
public:
    static constexpr int kDone = 0;
    static constexpr int kNotAccessible = -3; ///< the file cannot be read, or not be written
    static constexpr int kNoPath = -4; ///< checkAccessAuthority has not succeeded

    /// The model names folder and file; a "/" in it becomes "_" there.
    explicit TemplateStore(QString modelName);
    TemplateStore(const TemplateStore&) = delete;
    TemplateStore& operator=(const TemplateStore&) = delete;

    /// Data root + owner + "/" + model + "/"; makes the first two. Empty without a model.
    [[nodiscard]] QString GetAppTemplatesPath() const;
    /// Makes the folder and sets the path of the file. False, with a line in the run log, when it
    /// cannot be had.
    bool checkAccessAuthority();

    /// The template that templateSave writes. The name is taken as storedName gives it.
    void setCurrentName(const QString& name) { m_currentName = storedName(name); }
    [[nodiscard]] const QString& currentName() const { return m_currentName; }

    /// Writes the record under the current name; keys that are there already are overwritten.
    /// kNotAccessible when the file was not written; it is then as it was. Throws std::system_error
    /// when the mutex cannot be locked.
    int templateSave(const _tagtemplateParam& record);
    /// Fills the stored fields; a missing key, or a value that the field cannot hold, gives an
    /// empty text, false or 0. The other fields stay as they are.
    int ReadTemplatesInfo(_tagtemplateParam* record, const QString& name) const;
    /// Reads the names of all templates; none when the file cannot be read.
    void enumAllTemplateName();
    /// Removes a template from the file, not from the list of names.
    int deleteTemplateItem(const QString& name);

    /// In the order of the file's groups, then those added since.
    [[nodiscard]] const QStringList& names() const { return m_names; }
    void addName(const QString& name) { m_names.append(name); }
    void removeName(const QString& name) { m_names.removeAll(name); }
    [[nodiscard]] const QString& templatePath() const { return m_templatePath; }

    /// Whether a group can have this name: "/" and "\" would cut it in two.
    [[nodiscard]] static bool canHold(const QString& name);
    /// The name under which a template comes back. The format knows one spelling of "General" only.
    [[nodiscard]] static QString storedName(const QString& name);

private:
    [[nodiscard]] bool isAccessible() const;

    std::mutex m_mutex;
    QString m_currentName;
    QString m_modelName;
    QString m_templatePath;
    QStringList m_names;
};
