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
    void offersEachWidget();
    void formsShowEachWidget_data();
    void formsShowEachWidget();
};

void TestDesigner::offersEachWidget()
{
    QPluginLoader loader(QStringLiteral(PLUGIN));
    const auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
    QVERIFY2(collection, qPrintable(loader.errorString()));

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
    }
    QCOMPARE(names, QStringList({QStringLiteral("TreeObjCheckable"), QStringLiteral("TreeObjCheckableE")}));
}

void TestDesigner::formsShowEachWidget_data()
{
    QTest::addColumn<QByteArray>("className");
    QTest::newRow("tree") << QByteArray("TreeObjCheckable");
    QTest::newRow("simple tree") << QByteArray("TreeObjCheckableE");
}

void TestDesigner::formsShowEachWidget()
{
    QFETCH(QByteArray, className);

    QByteArray text = R"(<ui version="4.0"><class>Form</class><widget class="QWidget" name="Form">
        <layout class="QVBoxLayout"><item><widget class=")" +
                      className + R"(" name="objects"/></item></layout></widget></ui>)";
    QBuffer form(&text);
    QUiLoader loader;
    loader.clearPluginPaths();
    loader.addPluginPath(QFileInfo(QStringLiteral(PLUGIN)).path());
    const std::unique_ptr<QWidget> widget(loader.load(&form));
    QVERIFY2(widget, qPrintable(loader.errorString()));
    const auto* objects = widget->findChild<QWidget*>(QStringLiteral("objects"));
    QVERIFY(objects);
    QCOMPARE(objects->metaObject()->className(), className.constData());
}

QTEST_MAIN(TestDesigner)
#include "tst_designer.moc"
