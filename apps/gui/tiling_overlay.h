// apps/gui/tiling_overlay.h - the tiling layout overlay: the plan of the mesh, core and tiles over
// the picture of a grid, laid over the whole form. The plan is the core's list of lines; this only
// paints it and passes the pointer on.
#pragma once
#include <QFrame>
#include <optional>

#include "commands/data_pictures.h"

namespace invsetup {
struct Session;
}

namespace invsetup::gui {

class FormBinder;
class PictureView;

class TilingOverlay : public QFrame {
    Q_OBJECT
public:
    /// Builds Frame_tiling_layout's controls into the overlay, over `parent` (the main window).
    TilingOverlay(Session& session, FormBinder& binder, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit_to_parent();
    /// The view takes the picture's size and draws its plan again.
    void redraw();
    void show_panels();

    Session& session_;
    FormBinder& binder_;
    PictureView* picture_ = nullptr;
    /// The observed readings, drawn under the plan when no background grid is named.
    std::optional<DataPicture> readings_;
};

}  // namespace invsetup::gui
