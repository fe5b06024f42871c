#include "dialogs/folder_choice.h"

#include <QFileDialog>

QString chosenFolder(QWidget* parent, const QString& start)
{
    QFileDialog dialog(parent, QStringLiteral("选择保存路径"), start);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
    const bool taken = dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty();
    return taken ? dialog.selectedFiles().constFirst() : QString();
}
