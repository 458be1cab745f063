#pragma once

#include <Pardel/currentuser.h>
#include <Pardel/mobdata.h>
#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QMouseEvent;
class QStandardItemModel;
QT_END_NAMESPACE

// Of the applications' map library, whose header says what they are; here only pointers to them and lists of them pass.
class MapPrimitiveRib;
namespace MapQt {
class MapPrimitive;
}

/** @file
 * The hubs through which an application's modules talk without knowing each other.
 *
 * The application makes one of each and hands them to its modules. Who has something to tell emits a signal, or calls
 * the slot of the same name without "Signal", or connects a signal of its own to that slot: a slot emits its signal
 * with the same arguments and does nothing else. Who wants to hear connects to the signal.
 *
 * Arguments reach the receivers exactly as they were given. What a pointer or a reference names stays the sender's;
 * receivers may read and change it while the call lasts. Connections are direct, on the GUI thread: queued ones would
 * find pointers and references to what is gone.
 *
 * The order of the declarations fixes the indexes in the meta-objects and must stay as it is.
 */

/** Events of the map view. */
class PARDEL_EXPORT Notifyer : public QObject
{
    Q_OBJECT

public:
    /** A hub without connections; @p parent may be null and owns it otherwise. */
    explicit Notifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~Notifyer() override;

Q_SIGNALS:
    void OnMapMovedSignal(); ///< The map has been moved.
    void OnMapMouseMoveSignal(int x, int y,
                              QMouseEvent* e); ///< The mouse has moved over the map: its position and Qt's event.
    void OnMapMouseUpSignal(int x, int y, QMouseEvent* e);           ///< A mouse button was released over the map.
    void OnMapMouseDownSignal(int x, int y, QMouseEvent* e);         ///< A mouse button was pressed over the map.
    void OnMapScaleChangedSignal(int scale);                         ///< The map's new scale.
    void OnObjectsClickedSignal(QList<qint64>* lst);                 ///< Identifiers of the objects under the mouse.
    void OnObjectsHintedSignal(QList<qint64>* lst);                  ///< Identifiers of the objects to be hinted at.
    void OnDynamicObjectsHintedSignal(QList<MapPrimitiveRib>* lst);  ///< Dynamic objects to be hinted at.
    void OnDynamicObjectsClickedSignal(QList<MapPrimitiveRib>* lst); ///< Dynamic objects under the mouse.
    void OnOffCenterDinObjectSignal(MapPrimitiveRib* pMPRib);        ///< A dynamic object is off the map's center.
    void OnMapPrimitivesClickedSignal(QList<MapPrimitiveRib>* lst, int x, int y,
                                      QMouseEvent* e); ///< Primitives under the mouse.
    void OnMapPrimitivesClickedPtrSignal(QList<MapQt::MapPrimitive*>* lst, int x, int y,
                                         QMouseEvent* e);                        ///< The same, by pointers.
    void OnMapPrimitivesHintedSignal(QList<MapPrimitiveRib>* lst, int x, int y); ///< Primitives to be hinted at.
    void OnChangeCountMapsSignal(int index1, int index2);                        ///< The number of maps has changed.
    void OnKeyPressEscSignal();                                                  ///< Escape was pressed.
    void OnMapKeyPressSignal(int key);                                           ///< A key was pressed on the map.

public Q_SLOTS:
    /// Emits the signal of the same name and "Signal", with the same arguments.
    /// @{
    void OnMapMoved();
    void OnMapMouseMove(int x, int y, QMouseEvent* e);
    void OnMapMouseUp(int x, int y, QMouseEvent* e);
    void OnMapMouseDown(int x, int y, QMouseEvent* e);
    void OnMapScaleChanged(int scale);
    void OnObjectsClicked(QList<qint64>* lst);
    void OnObjectsHinted(QList<qint64>* lst);
    void OnDynamicObjectsHinted(QList<MapPrimitiveRib>* lst);
    void OnDynamicObjectsClicked(QList<MapPrimitiveRib>* lst);
    void OnOffCenterDinObject(MapPrimitiveRib* pMPRib);
    void OnMapPrimitivesClicked(QList<MapPrimitiveRib>* lst, int x, int y, QMouseEvent* e);
    void OnMapPrimitivesClickedPtr(QList<MapQt::MapPrimitive*>* lst, int x, int y, QMouseEvent* e);
    void OnMapPrimitivesHinted(QList<MapPrimitiveRib>* lst, int x, int y);
    void OnChangeCountMaps(int index1, int index2);
    void OnKeyPressEsc();
    void OnMapKeyPress(int key);
    /// @}
};

/** Events of the server connection and of the application's kernel. */
class PARDEL_EXPORT KernelNotifyer : public QObject
{
    Q_OBJECT

public:
    /** A hub without connections; @p parent may be null and owns it otherwise. */
    explicit KernelNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~KernelNotifyer() override;

Q_SIGNALS:
    void OnConnectToServerSignal(QByteArray& connection); ///< The connection to the server is to be made.
    void OnChangeActiveMapModelSignal(int index);         ///< Another model of the map is the active one.
    void OnAnswerFromServerSignal(QByteArray& command, QByteArray& data); ///< The server has answered a command.
    void OnSetNavigationDataSignal(const QModelIndex& itemIndex); ///< The item whose navigation data are to be shown.
    void OnSelectIdObjectSignal(unsigned int id);                 ///< An object was selected.
    void OnObjectsReceivedSignal();                               ///< The objects have come from the server.
    void OnConnectionStateChangedSignal(bool connect, QString host);   ///< Whether the host is connected now.
    void OnProfileRecievedSignal();                                    ///< The profile has come from the server.
    void OnWindowSetTitleSignal(QString title);                        ///< The title that the window is to have.
    void OnSetInformationAboutCurrentUserSignal(CurrentUser& CUser);   ///< The user who has logged in.
    void Signal_GetModelActiveZVK(QStandardItemModel* modelActiveZVK); ///< Receivers fill the model or use it.
    void OnSettingsChangedSignal();                                    ///< The settings have changed.
    /** The period, in Unix seconds, and the objects that a report is to be made of, and the moment to begin at. */
    void OnDataToReportSignal(unsigned int timeFrom, unsigned int timeTo, QList<int> ObjsList, unsigned int timeCur);
    void OnTimeSelectedByReportSignal(unsigned int time); ///< Unix seconds, as all times here.

public Q_SLOTS:
    /// Emits the signal of the same name and "Signal", with the same arguments.
    /// @{
    void OnChangeActiveMapModel(int index);
    void OnAnswerFromServer(QByteArray& command, QByteArray& data);
    void OnConnectToServer(QByteArray& connection);
    void OnSetNavigationData(const QModelIndex& itemIndex);
    void OnSelectIdObject(unsigned int id);
    void OnObjectsReceived();
    void OnConnectionStateChanged(bool connected, QString host);
    void OnProfileRecieved();
    void OnWindowSetTitle(QString title);
    void OnSetInformationAboutCurrentUser(CurrentUser& CUser);
    void GetModelActiveZVK(QStandardItemModel* modelActiveZVK); ///< Emits Signal_GetModelActiveZVK.
    void OnSettingsChanged();
    void OnDataToReport(unsigned int timeFrom, unsigned int timeTo, QList<int> ObjsList, unsigned int timeCur);
    void OnTimeSelectedByReport(unsigned int time);
    /// @}
};

/** Incoming telemetry and mail. */
class PARDEL_EXPORT DataPumpNotifyer : public QObject
{
    Q_OBJECT

public:
    /** A hub without connections; @p parent may be null and owns it otherwise. */
    explicit DataPumpNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~DataPumpNotifyer() override;

Q_SIGNALS:
    void OnMailSignal();                 ///< There is mail.
    void OnDataRecievedSignal(MobData&); ///< A report has come in; receivers may change it.
    void OnMailSendedSignal();           ///< Mail has been sent.

public Q_SLOTS:
    /// Emits the signal of the same name and "Signal", with the same arguments.
    /// @{
    void OnMail();
    void OnDataRecieved(MobData& mobData);
    void OnMailSended();
    /// @}
};

/** Events of the track player. */
class PARDEL_EXPORT PlayerNotifyer : public QObject
{
    Q_OBJECT

public:
    /** A hub without connections; @p parent may be null and owns it otherwise. */
    explicit PlayerNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~PlayerNotifyer() override;

Q_SIGNALS:
    void OnSelectObjectsSignal(); ///< Objects are to be selected.

public Q_SLOTS:
    /// Emits the signal of the same name and "Signal", with the same arguments.
    /// @{
    void OnSelectObjects();
    /// @}
};
