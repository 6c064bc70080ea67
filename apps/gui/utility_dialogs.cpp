// apps/gui/utility_dialogs.cpp - the reference field and point transform forms.
#include "utility_dialogs.h"

#include <QCheckBox>
#include <QDate>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "support/numbers.h"

namespace invsetup::gui {

namespace {

QDoubleSpinBox* number_box(QWidget* parent, double low, double high, int decimals, double value) {
    auto* box = new QDoubleSpinBox(parent);
    box->setRange(low, high);
    box->setDecimals(decimals);
    box->setValue(value);
    box->setMinimumWidth(140);
    box->setButtonSymbols(QAbstractSpinBox::NoButtons);
    box->setKeyboardTracking(false);
    return box;
}

QLineEdit* result_box(QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setReadOnly(true);
    box->setMinimumWidth(140);
    return box;
}

}  // namespace

IgrfDialog::IgrfDialog(const IgrfModel* model, QString model_problem, QWidget* parent) : QDialog(parent), model_(model) {
    setWindowTitle("Calculate IGRF");
    auto* layout = new QVBoxLayout(this);
    auto* place = new QGroupBox("Date and place", this);
    auto* form = new QFormLayout(place);
    date_ = new QDateEdit(QDate::currentDate(), place);
    date_->setCalendarPopup(true);
    date_->setDisplayFormat("yyyy-MM-dd");
    date_->setDateRange(QDate(1900, 1, 1), QDate(2030, 12, 31));
    longitude_ = number_box(place, -180, 360, 5, 0);
    latitude_ = number_box(place, -90, 90, 5, 0);
    elevation_ = number_box(place, -12000, 1e6, 1, 0);
    form->addRow("&Date", date_);
    form->addRow("L&ongitude (deg E)", longitude_);
    form->addRow("L&atitude (deg N)", latitude_);
    form->addRow("&Elevation (m)", elevation_);
    layout->addWidget(place);

    auto* calculate_button = new QPushButton("&Calculate", this);
    layout->addWidget(calculate_button);

    auto* results = new QGroupBox("Reference field", this);
    auto* result_form = new QFormLayout(results);
    intensity_ = result_box(results);
    inclination_ = result_box(results);
    declination_ = result_box(results);
    result_form->addRow("Intensity (nT)", intensity_);
    result_form->addRow("Inclination (deg)", inclination_);
    result_form->addRow("Declination (deg)", declination_);
    layout->addWidget(results);

    problem_ = new QLabel(model_problem, this);
    problem_->setWordWrap(true);
    problem_->setStyleSheet("color: #b00000;");
    problem_->setVisible(!model_problem.isEmpty());
    layout->addWidget(problem_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    ok_ = buttons->button(QDialogButtonBox::Ok);
    ok_->setEnabled(false);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(calculate_button, &QPushButton::clicked, this, &IgrfDialog::calculate);
    calculate_button->setEnabled(model_ != nullptr);
    calculate_button->setDefault(true);
}

void IgrfDialog::calculate() {
    if (model_ == nullptr) return;
    const std::optional<double> year = decimal_year(date_->date().toString("yyyy-MM-dd").toStdString());
    try {
        const GeomagneticField field = model_->field(*year, longitude_->value(), latitude_->value(), elevation_->value());
        intensity_->setText(QString::fromStdString(format_picture(field.intensity, "0.00")));
        inclination_->setText(QString::fromStdString(format_picture(field.inclination, "0.000")));
        declination_->setText(QString::fromStdString(format_picture(field.declination, "0.000")));
        field_ = field;
        problem_->hide();
        ok_->setEnabled(true);
        ok_->setFocus();
    } catch (const std::exception& fault) {
        problem_->setText(QString::fromStdString(fault.what()));
        problem_->show();
    }
}

TransformDialog::TransformDialog(const PointTransform& transform, QWidget* parent)
    : QDialog(parent), original_(transform) {
    setWindowTitle("Define Coordinate Transform");
    auto* layout = new QVBoxLayout(this);
    auto* frame = new QGroupBox("Local (mesh) and map coordinates", this);
    auto* grid = new QGridLayout(frame);
    constexpr double big = 1e12;
    auto add = [&](int row, int column, const char* caption, double PointTransform::*field, int decimals) {
        auto* box = number_box(frame, -big, big, decimals, transform.*field);
        auto* label = new QLabel(caption, frame);
        label->setBuddy(box);
        grid->addWidget(label, row, column * 2);
        grid->addWidget(box, row, column * 2 + 1);
        fields_.emplace_back(field, box);
        connect(box, &QDoubleSpinBox::valueChanged, this, &TransformDialog::show_derived);
    };
    add(0, 0, "Local X &0", &PointTransform::local_x0, 4);
    add(0, 1, "Map X 0", &PointTransform::map_x0, 4);
    add(1, 0, "Local Y 0", &PointTransform::local_y0, 4);
    add(1, 1, "Map Y 0", &PointTransform::map_y0, 4);
    add(2, 0, "Local X 1", &PointTransform::local_x1, 4);
    add(2, 1, "Map X 1", &PointTransform::map_x1, 4);
    add(3, 0, "Local Y 1", &PointTransform::local_y1, 4);
    add(3, 1, "Map Y 1", &PointTransform::map_y1, 4);
    add(4, 0, "&Angle (deg)", &PointTransform::angle, 6);
    add(5, 0, "X scale", &PointTransform::x_scale, 8);
    add(5, 1, "Y scale", &PointTransform::y_scale, 8);
    add(6, 0, "Z offset", &PointTransform::z_offset, 4);
    add(6, 1, "Z scale", &PointTransform::z_scale, 8);
    layout->addWidget(frame);

    active_ = new QCheckBox("Transform active", this);
    active_->setEnabled(false);  // follows from the values
    derived_ = new QLabel(this);
    layout->addWidget(active_);
    layout->addWidget(derived_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    show_derived();
}

PointTransform TransformDialog::transform() const {
    PointTransform result = original_;
    for (const auto& [field, box] : fields_) result.*field = box->value();
    return result;
}

void TransformDialog::show_derived() {
    PointTransform t = transform();
    update_point_transform(t);
    active_->setChecked(t.active);
    derived_->setText(QString("cos %1   sin %2").arg(t.cos_angle, 0, 'f', 8).arg(t.sin_angle, 0, 'f', 8));
}

}  // namespace invsetup::gui
