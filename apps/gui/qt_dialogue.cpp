// apps/gui/qt_dialogue.cpp - Qt's standard dialogues behind the dialogue port.
#include "qt_dialogue.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <cstdio>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace invsetup::gui {

namespace {

QString q(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

QString qt_file_filter(const std::string& filter) {
    const QStringList parts = q(filter).split('|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString label = parts[i].trimmed();
        // The label's own "(...)" is replaced by the patterns that really apply.
        const qsizetype open = label.indexOf('(');
        if (open > 0) label = label.left(open).trimmed();
        QStringList patterns;
        for (const QString& pattern : parts[i + 1].split(QRegularExpression("[;,]"), Qt::SkipEmptyParts)) {
            const QString p = pattern.trimmed();
            const QString qt_pattern = p == "*.*" ? QStringLiteral("*") : p;
            if (!patterns.contains(qt_pattern)) patterns << qt_pattern;
        }
        filters << label + " (" + patterns.join(' ') + ")";
    }
    return filters.join(";;");
}

void QtDialogue::message_box(const std::string& text) {
    if (messages_to_error_stream) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    QMessageBox::information(parent_, dialogue_caption, q(text));
}

bool QtDialogue::ask_yes_no(const std::string& text) {
    return QMessageBox::question(parent_, dialogue_caption, q(text), QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::Yes) == QMessageBox::Yes;
}

std::string QtDialogue::ask_text(const std::string& prompt, const std::string& initial) {
    bool accepted = false;
    const QString text = QInputDialog::getText(parent_, dialogue_caption, q(prompt), QLineEdit::Normal, q(initial), &accepted);
    return accepted ? text.toStdString() : initial;
}

std::optional<std::string> QtDialogue::choose_file(const FileChoice& request) {
    if (!file_answers.empty()) {
        std::string answer = std::move(file_answers.front());
        file_answers.pop_front();
        return answer;
    }
    QFileDialog dialog(parent_, q(request.title));
    dialog.setNameFilters(qt_file_filter(request.filter).split(";;"));
    if (!request.start_name.empty()) {
        const QFileInfo start(q(request.start_name));
        if (start.isDir()) {
            dialog.setDirectory(start.absoluteFilePath());
        } else {
            dialog.setDirectory(start.absolutePath());
            dialog.selectFile(start.fileName());
        }
    }
    if (request.save) {
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        // Asking before a file is replaced is the command's part.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
    } else {
        dialog.setFileMode(QFileDialog::ExistingFile);
    }
    if (!request.default_extension.empty()) dialog.setDefaultSuffix(q(request.default_extension));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().front().toStdString();
}

bool QtDialogue::ask_options(const std::string& title, std::vector<OptionRow>& rows) {
    QDialog dialog(parent_);
    dialog.setWindowTitle(q(title));
    auto* layout = new QVBoxLayout(&dialog);
    std::vector<QCheckBox*> boxes;
    for (const OptionRow& row : rows) {
        auto* box = new QCheckBox(q(row.caption), &dialog);
        box->setChecked(row.checked);
        box->setToolTip(q(row.tip));
        layout->addWidget(box);
        boxes.push_back(box);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted) return false;
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i].checked = boxes[i]->isChecked();
    return true;
}

void QtDialogue::do_events() { QCoreApplication::processEvents(); }

void QtDialogue::progress(int percent) {
    if (progress_sink_) progress_sink_(percent);
}

void QtDialogue::beep() { QApplication::beep(); }

}  // namespace invsetup::gui
