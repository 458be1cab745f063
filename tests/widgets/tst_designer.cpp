// The Qt Designer plug-in as Designer and Qt's form loader see it.

#include <QBuffer>
#include <QFileInfo>
#include <QPluginLoader>
#include <QTest>
#include <QUiLoader>
#include <QWidget>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <memory>

class TestDesigner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offersEachWidget()
    {
        QPluginLoader loader(QStringLiteral(PLUGIN));
        const auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
        QVERIFY2(collection, qPrintable(loader.errorString()));

        QUiLoader forms;
        forms.clearPluginPaths();
        forms.addPluginPath(QFileInfo(QStringLiteral(PLUGIN)).path());
        QStringList names;
        for (QDesignerCustomWidgetInterface* description : collection->customWidgets()) {
            names += description->name();
            QVERIFY(QFileInfo::exists(QStringLiteral(HEADERS "/") + description->includeFile()));
            QVERIFY(!description->isContainer());
            QVERIFY(description->domXml().contains(QLatin1Char('"') + description->name() + QLatin1Char('"')));
            QVERIFY(!description->toolTip().isEmpty());

            QWidget parent;
            QWidget* widget = description->createWidget(&parent);
            QCOMPARE(QString::fromLatin1(widget->metaObject()->className()), description->name());
            QCOMPARE(widget->parentWidget(), &parent);

            QByteArray text = "<ui version='4.0'><class>Form</class><widget class='QWidget' name='Form'>"
                              "<layout class='QVBoxLayout'><item><widget class='NAME' name='objects'/></item></layout>"
                              "</widget></ui>";
            QBuffer form(&text.replace("NAME", description->name().toLatin1()));
            const std::unique_ptr<QWidget> window(forms.load(&form));
            QVERIFY2(window, qPrintable(forms.errorString()));
            const auto* objects = window->findChild<QWidget*>(QStringLiteral("objects"));
            QVERIFY(objects && objects->metaObject()->className() == description->name().toLatin1());
        }
        QCOMPARE(names, QStringList({QStringLiteral("TreeObjCheckable"), QStringLiteral("TreeObjCheckableE")}));
    }
};

QTEST_MAIN(TestDesigner)
#include "tst_designer.moc"
