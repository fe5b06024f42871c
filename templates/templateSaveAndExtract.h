// The template dialog: stores the main window's settings under a new name, or applies a stored
// template. It knows no control of the main window; records travel through signals.
#pragma once

#include "dialogs/statusmessagedialog.h"
#include "templates/template_record.h"
#include "templates/template_store.h"

#include <QDialog>

#include <memory>

namespace Ui {
class templateSaveAndExtract;
}

/// One is made each time the template button is pressed, connected both ways and run with exec().
/// Saving: templateInfoCollect() asks the main window, whose templateInfoSave(param) is wired to
/// onTemplateInfoSave. Applying: this one's templateInfoSave(param) goes to the main window, which
/// answers through onTemplateInfoStatus. GUI thread.
class templateSaveAndExtract : public QDialog
{
    Q_OBJECT

public:
    /// The second text and the mode are kept and play no further part: the dialog opens for
    /// applying when there is a template, else for saving.
    templateSaveAndExtract(
        QString modelName, QString second, int openingMode, QWidget* parent = nullptr);
    ~templateSaveAndExtract() override;

signals:
    void workStatus(int code, int value);
    void templateInfoCollect();
    void templateInfoSave(ScanTemplateParam param);

public slots:
    /// The main window's answer to templateInfoCollect.
    void onTemplateInfoSave(ScanTemplateParam param);
    /// The main window's progress while it applies a template. Type 4 counts only: -1 failed, 100
    /// done.
    void onTemplateInfoStatus(int type, int value);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void selSaveAndExtractTemplate();
    void onInTemplateLEdit();
    void onProcessCancelBtn();
    void onProcessWorkStatus(int code, int value);
    void onProcessTemplateChanged();
    void onProcessDeleteBtn();
    void onProcessokBtn();

private:
    void setAppTitleName(const QString& name);
    void initConnect();
    void intShell();
    void saveShellInfoToTemplate();
    void getTemplateInfoToShell();
    /// -1 empty name, -2 not in the list, -3 the file cannot be changed, 0 done.
    int deleteTemplateItemfromList(const QString& name);
    [[nodiscard]] QString currentListName() const;
    void showWorkStatus(int code, int value, const QString& name);
    /// Runs the question and tells whether the answer was Yes.
    bool ask(int code, const QString& name = QString());

    std::unique_ptr<Ui::templateSaveAndExtract> m_ui;
    std::unique_ptr<TemplateStore> m_store;
    std::unique_ptr<statusMessageDialog> m_statusBox; ///< made on first use
    QString m_modelName;
    QString m_second;
    int m_openingMode;
    int m_lastStatus = 0; ///< the code shown last
};
