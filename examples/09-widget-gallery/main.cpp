// Shows every widget of the library with sample data. With --pictures FOLDER it saves a picture of each there and ends;
// with --translation FILE (a pardel_*.qm) it speaks that language.

#include <Pardel/pardel.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTimeEdit>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardItemModel>
#include <QTextStream>
#include <QTranslator>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

constexpr int objectIdRole = Qt::UserRole + 10;

/// Groups of vehicles: name, plate and driver, the object's id at the name. Vehicle 4 belongs to two of them.
void addVehicles(QStandardItemModel& model)
{
    const struct
    {
        const char* group;
        int id;
        const char* name;
        const char* plate;
        const char* driver;
    } vehicles[] = {
        {"Trucks", 1, "Atlas", "WK 4031", "Hanna Berg"},
        {"Trucks", 2, "Atoll", "WK 4032", "Jan Kovac"},
        {"Trucks", 3, "Bison", "WK 4107", "Maria Santos"},
        {"Trucks", 4, "Condor", "WK 4110", "Oleg Petrov"},
        {"Buses", 11, "Line 7", "BU 7001", "Anton Weber"},
        {"Buses", 12, "Line 12", "BU 7002", "Sanna Laine"},
        {"Winter service", 4, "Condor", "WK 4110", "Oleg Petrov"},
        {"Winter service", 21, "Attila", "SV 0921", "Ann Lee"},
    };
    QStandardItem* group = nullptr;
    for (const auto& vehicle : vehicles) {
        if (!group || group->text() != QLatin1String(vehicle.group)) {
            group = new QStandardItem(QLatin1String(vehicle.group));
            model.appendRow(group);
        }
        auto* name = new QStandardItem(QLatin1String(vehicle.name));
        name->setData(vehicle.id, objectIdRole);
        group->appendRow(
            {name, new QStandardItem(QLatin1String(vehicle.plate)), new QStandardItem(QLatin1String(vehicle.driver))});
    }
    model.setHorizontalHeaderLabels({QStringLiteral("Vehicle"), QStringLiteral("Plate"), QStringLiteral("Driver")});
}

/// A line of text to filter or search with, and the widget under it, in a box with a title.
QGroupBox* makeBox(const char* title, QLineEdit* line, QWidget* widget)
{
    auto* box = new QGroupBox(QLatin1String(title));
    auto* layout = new QVBoxLayout(box);
    if (line)
        layout->addWidget(line);
    layout->addWidget(widget);
    return box;
}

/// The window: the trees side by side, under them buttons that open the dialogs.
class Gallery : public QWidget
{
public:
    TreeObjCheckable* tree = new TreeObjCheckable(this);
    TreeObjCheckableE* simpleTree = new TreeObjCheckableE(this);
    QTreeView* filteredView = new QTreeView;
    QLineEdit* filterLine = new QLineEdit;
    Calendar* calendar = new Calendar(this);
    fdPassword login;
    DialogObjsFromTo dialog;

    Gallery()
    {
        setWindowTitle(QStringLiteral("Pardel's widgets"));
        addVehicles(m_vehicles);
        auto* layout = new QGridLayout(this);

        tree->setModelAndCheckedO(&m_vehicles, &m_checked); // makes its own copy; the ids say what is ticked
        tree->getTreeView()->expandAll();
        auto* treeFilter = new QLineEdit;
        treeFilter->setPlaceholderText(QStringLiteral("setFilterStr"));
        connect(treeFilter, &QLineEdit::textChanged, tree, &TreeObjCheckable::setFilterStr);
        layout->addWidget(makeBox("TreeObjCheckable", treeFilter, tree), 0, 0);

        simpleTree->setModelAndCheckedO(&m_vehicles, &m_checked);
        layout->addWidget(makeBox("TreeObjCheckableE", nullptr, simpleTree), 0, 1);

        m_proxy.setSourceModel(&m_vehicles);
        m_proxy.setFilterKeyColumns({0, 2}); // vehicle or driver
        filteredView->setModel(&m_proxy);
        filterLine->setPlaceholderText(QStringLiteral("setFilterFixedString"));
        connect(filterLine, &QLineEdit::textChanged, this, [this](const QString& text) {
            filteredView->collapseAll(); // a filter is changed faster that way
            m_proxy.setFilterFixedString(text);
            filteredView->expandAll();
        });
        filteredView->expandAll();
        filteredView->header()->resizeSections(QHeaderView::ResizeToContents);
        layout->addWidget(makeBox("TreeSortFilterProxyModel", filterLine, filteredView), 0, 2);
        layout->setColumnStretch(2, 1);
        resize(1080, 460);

        addDialog("Calendar", 0, [this] { calendar->showWithDate(QDate::currentDate()); });
        addDialog("fdPassword", 1, [this] { login.show(); });
        dialog.tree->setModelAndCheckedO(&m_vehicles, &m_checked);
        dialog.dateFrom->setDateTime(QDateTime({2026, 3, 8}, {6, 0}));
        dialog.dateTo->setDateTime(QDateTime({2026, 3, 9}, {18, 30}));
        for (QRadioButton* mode : {dialog.rbPlayerWithReports, dialog.rbOnlyPlayer, dialog.rbOnlyReports})
            mode->show();
        addDialog("DialogObjsFromTo", 2,
                  [this] { dialog.showWithStatus(QStringLiteral("Report of the driven ways")); });
    }

private:
    template <typename Function>
    void addDialog(const char* name, int column, Function open)
    {
        auto* button = new QPushButton(QLatin1String(name));
        connect(button, &QPushButton::clicked, this, open);
        qobject_cast<QGridLayout*>(layout())->addWidget(button, 1, column);
    }

    QStandardItemModel m_vehicles;
    TreeSortFilterProxyModel m_proxy;
    QList<int> m_checked = {1, 4, 11, 12};
};

/// Shows the dialogs in a state worth a picture and saves one of each widget; false if a file cannot be written.
bool savePictures(Gallery& gallery, const QDir& folder)
{
    gallery.show();
    gallery.filterLine->setText(QStringLiteral("an"));
    QAbstractItemModel* vehicles = gallery.simpleTree->getTreeView()->model();
    vehicles->setData(vehicles->index(2, 0, vehicles->index(0, 0)), Qt::Checked, Qt::CheckStateRole);
    gallery.calendar->showWithDate({2026, 3, 8});
    gallery.login.show();
    gallery.login.loginEdit->setText(QStringLiteral("hanna"));
    gallery.login.passwordEdit->setText(QStringLiteral("secret"));
    gallery.dialog.showWithStatus(QStringLiteral("Report of the driven ways"));
    gallery.dialog.searchEdit->setText(QStringLiteral("at"));
    QCoreApplication::processEvents(); // so that all layouts are settled
    bool saved = folder.mkpath(QStringLiteral("."));
    for (const auto& [name, widget] : std::initializer_list<std::pair<const char*, QWidget*>>{
             {"gallery", &gallery},
             {"treeobjcheckable", gallery.tree},
             {"treeobjcheckablee", gallery.simpleTree},
             {"treesortfilterproxymodel", gallery.filteredView->parentWidget()},
             {"calendar", gallery.calendar},
             {"fdpassword", &gallery.login},
             {"dialogobjsfromto", &gallery.dialog},
         })
        saved = widget->grab().save(folder.filePath(QLatin1String(name) + QStringLiteral(".png"))) && saved;
    return saved;
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption pictures(
        QStringLiteral("pictures"), QStringLiteral("Save pictures of the widgets and end."), QStringLiteral("folder"));
    const QCommandLineOption translation(QStringLiteral("translation"), QStringLiteral("A pardel_*.qm."),
                                         QStringLiteral("file"));
    parser.addOptions({pictures, translation});
    parser.addHelpOption();
    parser.process(application);

    QTranslator translator;
    if (parser.isSet(translation) && !translator.load(parser.value(translation))) {
        QTextStream(stderr) << "cannot load " << parser.value(translation) << "\n";
        return 1;
    }
    QCoreApplication::installTranslator(&translator);

    Gallery gallery;
    if (parser.isSet(pictures))
        return savePictures(gallery, parser.value(pictures)) ? 0 : 1;
    gallery.show();
    return QApplication::exec();
}
