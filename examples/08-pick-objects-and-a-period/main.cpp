// Asks for objects and a period, as before a report.

#include <Pardel/pardel.h>

#include <QApplication>
#include <QDateTimeEdit>
#include <QRadioButton>
#include <QStandardItemModel>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);

    QStandardItemModel objects;
    for (int id = 1; id <= 5; ++id) {
        auto* object = new QStandardItem(QStringLiteral("Object %1").arg(id));
        object->setData(id, Qt::UserRole + 10);
        objects.appendRow(object);
    }

    DialogObjsFromTo dialog; // made once, shown whenever it is needed
    QList<int> ids = {1, 3};
    dialog.tree->setModelAndCheckedO(&objects, &ids);
    const QDate today = QDate::currentDate();
    dialog.dateFrom->setDateTime(QDateTime(today.addDays(-1), QTime(0, 0)));
    dialog.dateTo->setDateTime(QDateTime(today, QTime(0, 0)));
    dialog.rbOnlyReports->show(); // of the switches, those that this application offers
    dialog.rbPlayerWithReports->show();

    QObject::connect(&dialog, &QDialog::accepted, &dialog, [&] {
        dialog.tree->getCheckedObjs(&ids, QModelIndex());
        QTextStream out(stdout);
        out << (dialog.rbOnlyReports->isChecked() ? "Report on" : "Replay and report on");
        for (const int id : qAsConst(ids))
            out << " " << id;
        out << " from " << dialog.dateFrom->dateTime().toString(Qt::ISODate) << " to "
            << dialog.dateTo->dateTime().toString(Qt::ISODate) << "\n";
    });
    dialog.showWithStatus(QStringLiteral("Report of the day"));
    if (argc > 1) { // a file for a picture, instead of waiting for the user
        const bool saved = dialog.grab().save(QString::fromLocal8Bit(argv[1]));
        dialog.accept();
        return saved ? 0 : 1;
    }
    return QApplication::exec();
}
