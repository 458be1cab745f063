// Qt Designer's view of the widgets that an application may put into its forms.

#include <Pardel/treeobjcheckable.h>
#include <Pardel/treeobjcheckablee.h>

#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

namespace {

/// One widget: what Designer asks, and how to make it.
class WidgetDescription : public QObject, public QDesignerCustomWidgetInterface
{
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    using Maker = QWidget* (*)(QWidget* parent);

    WidgetDescription(const char* className, const char* header, const QString& toolTip, Maker make, QObject* parent)
        : QObject(parent),
          m_className(QLatin1String(className)),
          m_header(QLatin1String(header)),
          m_toolTip(toolTip),
          m_make(make)
    {}

    QString name() const override { return m_className; }
    QString group() const override { return QStringLiteral("Pardel"); }
    QString includeFile() const override { return m_header; }
    QString toolTip() const override { return m_toolTip; }
    QString whatsThis() const override { return m_toolTip; }
    QIcon icon() const override { return {}; }
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override { return m_make(parent); }

    QString domXml() const override
    {
        const QString objectName = m_className.at(0).toLower() + m_className.mid(1);
        return QStringLiteral(R"(<ui language="c++"><widget class="%1" name="%2"/></ui>)").arg(m_className, objectName);
    }

private:
    QString m_className;
    QString m_header;
    QString m_toolTip;
    Maker m_make;
};

template <typename Widget>
QWidget* make(QWidget* parent)
{
    return new Widget(parent);
}

} // namespace

class PardelDesigner : public QObject, public QDesignerCustomWidgetCollectionInterface
{
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")

public:
    QList<QDesignerCustomWidgetInterface*> customWidgets() const override { return m_widgets; }

private:
    QList<QDesignerCustomWidgetInterface*> m_widgets = {
        new WidgetDescription("TreeObjCheckable", "Pardel/treeobjcheckable.h",
                              tr("Objects as a tree of check boxes, with a filter and a search"),
                              make<TreeObjCheckable>, this),
        new WidgetDescription("TreeObjCheckableE", "Pardel/treeobjcheckablee.h",
                              tr("Objects as a simple tree of check boxes"), make<TreeObjCheckableE>, this)};
};

#include "pardeldesigner.moc"
