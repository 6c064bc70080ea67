// apps/gui/utility_dialogs.h - the two small modal forms of the Parameters tab: the geomagnetic
// reference field and the point transform.
#pragma once
#include <QDialog>
#include <filesystem>
#include <optional>

#include "support/igrf.h"
#include "support/point_transform.h"

class QDateEdit;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QCheckBox;

namespace invsetup::gui {

/// Date, longitude, latitude and elevation in; intensity, inclination and declination out. OK is
/// offered once a field has been calculated.
class IgrfDialog : public QDialog {
    Q_OBJECT
public:
    IgrfDialog(const IgrfModel* model, QString model_problem, QWidget* parent = nullptr);
    /// The field last calculated, when there is one.
    std::optional<GeomagneticField> field() const { return field_; }

private:
    void calculate();

    const IgrfModel* model_;
    QDateEdit* date_;
    QDoubleSpinBox* longitude_;
    QDoubleSpinBox* latitude_;
    QDoubleSpinBox* elevation_;
    QLineEdit* intensity_;
    QLineEdit* inclination_;
    QLineEdit* declination_;
    QLabel* problem_;
    QPushButton* ok_;
    std::optional<GeomagneticField> field_;
};

/// Every field of the point transform record; the derived ones are shown as the record stands.
class TransformDialog : public QDialog {
    Q_OBJECT
public:
    TransformDialog(const PointTransform& transform, QWidget* parent = nullptr);
    PointTransform transform() const;

private:
    void show_derived();
    PointTransform original_;
    std::vector<std::pair<double PointTransform::*, QDoubleSpinBox*>> fields_;
    QCheckBox* active_;
    QLabel* derived_;
};

}  // namespace invsetup::gui
