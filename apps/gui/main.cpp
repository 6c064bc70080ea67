// apps/gui/main.cpp - invsetup-gui: the desktop window. With a definition file named on the command
// line the window starts with it read (after the existing inversion's mesh and model of --mesh and
// --model, for a refinement run); --screenshots DIR saves a picture of each tab and of the
// tiling layout there and ends.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QTabWidget>
#include <QTimer>

#include "form_binder.h"
#include "main_window.h"
#include "qt_dialogue.h"
#include "session.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("invsetup");
    QCoreApplication::setApplicationName("invsetup-gui");
    QCoreApplication::setApplicationVersion(INVSETUP_VERSION);

    QCommandLineParser parser;
    parser.setApplicationDescription("invsetup: prepares 3D magnetic and gravity inversions");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("definition", "A definition file (.inp) to read at start");
    QCommandLineOption screenshots("screenshots", "Save a PNG of each tab in DIRECTORY and end", "DIRECTORY");
    parser.addOption(screenshots);
    QCommandLineOption mesh("mesh", "An existing inversion's mesh to read first (refinement mode on)", "FILE");
    parser.addOption(mesh);
    QCommandLineOption model("model", "The existing inversion's model, read after its mesh", "FILE");
    parser.addOption(model);
    QCommandLineOption size("size", "The window's size, WIDTHxHEIGHT", "SIZE", "1400x900");
    parser.addOption(size);
    parser.process(app);

    invsetup::gui::QtDialogue dialogue;
    invsetup::Session session(dialogue);
    invsetup::gui::MainWindow window(session, &dialogue);
    if (parser.isSet(screenshots) || parser.isSet(size)) {
        const QStringList parts = parser.value(size).split('x');
        if (parts.size() == 2) window.resize(parts[0].toInt(), parts[1].toInt());
    }
    window.show();
    dialogue.messages_to_error_stream = parser.isSet(screenshots);

    // As the File menu reads them: the mesh first, so that a refined definition finds refinement mode on.
    const auto read_named = [&](const QString& name, const char* menu_entry) {
        dialogue.file_answers.push_back(QDir::current().absoluteFilePath(name).toStdString());
        session.form.raise_change(menu_entry, 0);
        dialogue.file_answers.clear();
    };
    if (parser.isSet(mesh)) read_named(parser.value(mesh), "menu_read_inversion_mesh");
    if (parser.isSet(model)) read_named(parser.value(model), "menu_read_inversion_model");
    if (!parser.positionalArguments().isEmpty()) {
        const QString definition = QDir::current().absoluteFilePath(parser.positionalArguments().front());
        dialogue.file_answers.push_back(definition.toStdString());
        session.form.raise_change("menu_read_file", 0);
    }
    if (parser.isSet(screenshots)) {
        const QString directory = parser.value(screenshots);
        QDir().mkpath(directory);
        QTimer::singleShot(300, &window, [&window, &session, directory] {
            QTabWidget* tabs = window.tabs();
            for (int page = 0; page < tabs->count(); ++page) {
                tabs->setCurrentIndex(page);
                QEventLoop settle;  // pictures are drawn once their changes settle
                QTimer::singleShot(400, &settle, &QEventLoop::quit);
                settle.exec();
                window.grab().save(QString("%1/tab%2.png").arg(directory).arg(page + 1));
            }
            // The tiling layout of the mesh, as "View Mesh Layout" opens it.
            session.form.raise_change("Command_view_tiling");
            QCoreApplication::processEvents();
            QEventLoop settle;  // pictures are drawn once their changes settle
            QTimer::singleShot(500, &settle, &QEventLoop::quit);
            settle.exec();
            window.grab().save(QString("%1/tiling.png").arg(directory));
            QApplication::quit();
        });
    }
    return app.exec();
}
