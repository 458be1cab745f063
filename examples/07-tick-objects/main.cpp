// Lets the user tick objects in a tree of groups, and tells which are ticked.

#include <Pardel/pardel.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);

    // The application's objects: groups, and in each the objects with their ids.
    QStandardItemModel objects;
    int id = 0;
    for (const char* groupName : {"Trucks", "Buses"}) {
        auto* group = new QStandardItem(QLatin1String(groupName));
        for (int number = 1; number <= 3; ++number) {
            auto* object = new QStandardItem(QStringLiteral("%1 %2").arg(QLatin1String(groupName)).arg(number));
            object->setData(++id, Qt::UserRole + 10);
            group->appendRow(object);
        }
        objects.appendRow(group);
    }

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* filter = new QLineEdit;
    auto* tree = new TreeObjCheckable;
    auto* ticked = new QLabel;
    for (QWidget* widget : {static_cast<QWidget*>(filter), static_cast<QWidget*>(tree), static_cast<QWidget*>(ticked)})
        layout->addWidget(widget);
    filter->setPlaceholderText(QStringLiteral("Filter"));
    QObject::connect(filter, &QLineEdit::textChanged, tree, &TreeObjCheckable::setFilterStr);

    QList<int> ids = {2, 4};
    const auto showTicked = [&] {
        tree->getCheckedObjs(&ids, QModelIndex());
        QStringList texts;
        for (const int checked : qAsConst(ids))
            texts += QString::number(checked);
        ticked->setText(QStringLiteral("Ticked: ") + texts.join(QStringLiteral(", ")));
    };
    tree->setModelAndCheckedO(&objects, &ids);
    tree->getTreeView()->expandAll();
    QObject::connect(tree->getTreeView()->model(), &QAbstractItemModel::dataChanged, ticked, showTicked);
    showTicked();

    window.show();
    if (argc > 1) // a file for a picture, instead of waiting for the user
        return window.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
    return QApplication::exec();
}
