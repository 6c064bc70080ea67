// apps/gui/main_window.h - the main window: the form's tabs and menus over one session, the
// platform's part of the commands, and what the window remembers between runs.
#pragma once
#include <QMainWindow>
#include <array>
#include <memory>
#include <optional>

#include "commands/data_pictures.h"
#include "commands/form_commands.h"

class QTabWidget;

namespace invsetup {
struct Session;
}

namespace invsetup::gui {

class FormBinder;
class QtDialogue;
class TilingOverlay;

class MainWindow : public QMainWindow, public CommandHost {
    Q_OBJECT
public:
    /// Builds the window over `session`, restores the working directory ("CWD"), size and tab from
    /// the settings, and initialises the form. `qt_dialogue` is the session's dialogue when it is
    /// Qt's (its progress then moves the form's bar).
    MainWindow(Session& session, QtDialogue* qt_dialogue = nullptr, QWidget* parent = nullptr);
    ~MainWindow() override;

    FormBinder& binder() { return *binder_; }
    QTabWidget* tabs() const { return tabs_; }
    TilingOverlay* tiling_overlay() const { return overlay_; }

    // CommandHost
    bool start_process(const std::filesystem::path& program, const std::filesystem::path& directory) override;
    std::optional<std::string> choose_directory(const std::string& title, const std::string& start) override;
    bool calculate_igrf(GeomagneticField& field) override;
    bool define_point_transform(PointTransform& transform) override;
    void refresh_directories() override;
    void close_form() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void restore_settings();
    void save_settings();
    void connect_pictures();
    int picture_slot(const QString& name, int index) const;

    Session& session_;
    FormCommands commands_;
    FormBinder* binder_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    TilingOverlay* overlay_ = nullptr;
    std::array<std::optional<DataPicture>, 6> pictures_;
    std::unique_ptr<IgrfModel> igrf_;
    bool settings_saved_ = false;
};

}  // namespace invsetup::gui
