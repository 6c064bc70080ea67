// apps/gui/main_window.cpp - the main window over one session.
#include "main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QMenuBar>
#include <QProcess>
#include <QProgressBar>
#include <QScreen>
#include <QSettings>
#include <QTabWidget>

#include "commands/start_run.h"
#include "form/form_load.h"
#include "form_binder.h"
#include "picture_view.h"
#include "qt_dialogue.h"
#include "session.h"
#include "tiling_overlay.h"
#include "utility_dialogs.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace invsetup::gui {

namespace {

/// The drive of a path where the platform has drives ("C:"), else the root ("/").
std::string drive_of(const std::filesystem::path& path) {
    const std::string root = path.root_name().string();
    return root.empty() ? path.root_directory().string() : root;
}

}  // namespace

MainWindow::MainWindow(Session& session, QtDialogue* qt_dialogue, QWidget* parent)
    : QMainWindow(parent), session_(session) {
    setObjectName("Form_mag3d");
    binder_ = new FormBinder(session_, this);
    binder_->build_menus(menuBar());
    tabs_ = binder_->build_tabs(this);
    setCentralWidget(tabs_);
    setWindowTitle(QString::fromStdString(session_.form.control("Form_mag3d").caption));
    connect(binder_, &FormBinder::caption_changed, this, &QWidget::setWindowTitle);
    register_form_commands(session_, *this, commands_);
    connect_pictures();
    overlay_ = new TilingOverlay(session_, *binder_, this);

    // The drive list matters only where there are drives.
    if (QWidget* drives = binder_->widget("Drive1")) {
#ifdef _WIN32
        drives->setVisible(true);
#else
        drives->setVisible(false);
#endif
    }
    if (qt_dialogue != nullptr) {
        qt_dialogue->set_parent(this);
        auto* bar = qobject_cast<QProgressBar*>(binder_->widget("ProgressBar_load_ubc_model"));
        qt_dialogue->set_progress_sink([bar](int percent) {
            if (bar != nullptr) bar->setValue(percent);
        });
    }
    setMinimumSize(900, 600);
    restore_settings();
}

MainWindow::~MainWindow() {
    // The binder goes first so that no notification reaches a widget being destroyed.
    delete binder_;
    binder_ = nullptr;
}

void MainWindow::restore_settings() {
    QSettings settings;
    std::filesystem::path working = settings.value("CWD").toString().toStdString();
    std::error_code error;
    if (working.empty() || !std::filesystem::is_directory(working, error)) working = std::filesystem::current_path(error);
    session_.working_directory = working;
    initialise_inversion_form(session_);
    session_.form.set_text("Drive1", drive_of(working));
    session_.form.set_text("Dir1", working.string());

    const QByteArray geometry = settings.value("window/geometry").toByteArray();
    if (geometry.isEmpty() || !restoreGeometry(geometry)) {
        const QRect screen = QApplication::primaryScreen() != nullptr ? QApplication::primaryScreen()->availableGeometry()
                                                                      : QRect(0, 0, 1400, 900);
        resize(std::min(1400, screen.width() - 40), std::min(900, screen.height() - 40));
    }
    const int tab = settings.value("window/tab", -1).toInt();
    if (tab >= 0 && tab < tabs_->count()) session_.form.set_list_index("Tab_inversion", tab);
}

void MainWindow::save_settings() {
    if (settings_saved_) return;
    settings_saved_ = true;
    const std::filesystem::path working = unload_mag3d_form(session_);
    QSettings settings;
    settings.setValue("CWD", QString::fromStdString(working.string()));
    settings.setValue("window/geometry", saveGeometry());
    settings.setValue("window/tab", tabs_->currentIndex());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (commands_.busy) {
        // A creation is running on this thread; closing now would pull the form from under it.
        QApplication::beep();
        event->ignore();
        return;
    }
    save_settings();
    event->accept();
}

int MainWindow::picture_slot(const QString& name, int index) const {
    if (name == "Picture_data_points") return 0;
    if (name == "Picture_topo_points") return 1;
    if (name == "Picture_mag" && index >= 1 && index <= 5) return index;
    return -1;
}

void MainWindow::connect_pictures() {
    auto attach = [this](const char* name, int index) {
        PictureView* view = binder_->picture(name, index);
        if (view == nullptr) return;
        const int slot = picture_slot(name, index);
        const bool points_only = std::string_view(name) == "Picture_topo_points";
        view->set_renderer([this, slot, points_only](int width, int height) {
            auto& cached = pictures_[static_cast<std::size_t>(slot)];
            if (!cached) cached = load_data_picture(session_, slot);
            if (cached->empty() || (points_only && !cached->grid.empty())) return RgbaImage();  // nothing of its own
            return render_data_picture(*cached, width, height);
        });
    };
    attach("Picture_data_points", no_index);
    attach("Picture_topo_points", no_index);
    for (int index = 1; index <= 5; ++index) attach("Picture_mag", index);
    connect(binder_, &FormBinder::picture_stale, this, [this](const QString& name, int index) {
        const int slot = picture_slot(name, index);
        if (slot < 0) return;
        pictures_[static_cast<std::size_t>(slot)].reset();
        // The topography's grid and points views share their slot.
        if (slot == 1) {
            for (PictureView* view : {binder_->picture("Picture_mag", 1), binder_->picture("Picture_topo_points")})
                if (view != nullptr) view->invalidate();
        } else if (PictureView* view = binder_->picture(name.toStdString(), index)) {
            view->invalidate();
        }
    });
}

bool MainWindow::start_process(const std::filesystem::path& program, const std::filesystem::path& directory) {
#ifdef _WIN32
    // In a console of its own, minimised and without the focus (window style 6), not waited for.
    QProcess process;
    process.setProgram("cmd.exe");
    process.setArguments({"/c", QString::fromStdString(program.filename().string())});
    process.setWorkingDirectory(QString::fromStdString(directory.string()));
    process.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* arguments) {
        arguments->flags |= CREATE_NEW_CONSOLE;
        arguments->startupInfo->dwFlags |= STARTF_USESHOWWINDOW;
        arguments->startupInfo->wShowWindow = SW_SHOWMINNOACTIVE;
    });
    return process.startDetached();
#else
    std::string error;
    if (start_in_background(program, directory / "run.log", error) > 0) return true;
    session_.dialogue.message_box(error);
    return false;
#endif
}

std::optional<std::string> MainWindow::choose_directory(const std::string& title, const std::string& start) {
    const QString chosen =
        QFileDialog::getExistingDirectory(this, QString::fromStdString(title), QString::fromStdString(start));
    if (chosen.isEmpty()) return std::nullopt;
    return QDir::toNativeSeparators(chosen).toStdString();
}

bool MainWindow::calculate_igrf(GeomagneticField& field) {
    QString problem;
    if (!igrf_) {
        const std::filesystem::path table =
            find_igrf_coefficients(QCoreApplication::applicationDirPath().toStdString());
        try {
            if (table.empty())
                problem = QString("The IGRF coefficient table %1 is not beside the program in %2")
                              .arg(igrf_coefficients_file_name, QCoreApplication::applicationDirPath());
            else
                igrf_ = std::make_unique<IgrfModel>(IgrfModel::read(table));
        } catch (const std::exception& fault) {
            problem = QString::fromStdString(fault.what());
        }
    }
    IgrfDialog dialog(igrf_.get(), problem, this);
    if (dialog.exec() != QDialog::Accepted || !dialog.field()) return false;
    field = *dialog.field();
    return true;
}

bool MainWindow::define_point_transform(PointTransform& transform) {
    TransformDialog dialog(transform, this);
    if (dialog.exec() != QDialog::Accepted) return false;
    transform = dialog.transform();
    return true;
}

void MainWindow::refresh_directories() { binder_->refresh_directories(); }

void MainWindow::close_form() { close(); }

}  // namespace invsetup::gui
