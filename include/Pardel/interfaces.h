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
    explicit Notifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~Notifyer() override;

Q_SIGNALS:
    void OnMapMovedSignal();
    void OnMapMouseMoveSignal(int x, int y, QMouseEvent* e);
    void OnMapMouseUpSignal(int x, int y, QMouseEvent* e);
    void OnMapMouseDownSignal(int x, int y, QMouseEvent* e);
    void OnMapScaleChangedSignal(int scale);
    void OnObjectsClickedSignal(QList<qint64>* lst); ///< Identifiers of the objects under the mouse.
    void OnObjectsHintedSignal(QList<qint64>* lst);  ///< Identifiers of the objects to be hinted at.
    void OnDynamicObjectsHintedSignal(QList<MapPrimitiveRib>* lst);
    void OnDynamicObjectsClickedSignal(QList<MapPrimitiveRib>* lst);
    void OnOffCenterDinObjectSignal(MapPrimitiveRib* pMPRib);
    void OnMapPrimitivesClickedSignal(QList<MapPrimitiveRib>* lst, int x, int y, QMouseEvent* e);
    void OnMapPrimitivesClickedPtrSignal(QList<MapQt::MapPrimitive*>* lst, int x, int y, QMouseEvent* e);
    void OnMapPrimitivesHintedSignal(QList<MapPrimitiveRib>* lst, int x, int y);
    void OnChangeCountMapsSignal(int index1, int index2);
    void OnKeyPressEscSignal();
    void OnMapKeyPressSignal(int key);

public Q_SLOTS:
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
};

/** Events of the server connection and of the application's kernel. */
class PARDEL_EXPORT KernelNotifyer : public QObject
{
    Q_OBJECT

public:
    explicit KernelNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~KernelNotifyer() override;

Q_SIGNALS:
    void OnConnectToServerSignal(QByteArray& connection);
    void OnChangeActiveMapModelSignal(int index);
    void OnAnswerFromServerSignal(QByteArray& command, QByteArray& data);
    void OnSetNavigationDataSignal(const QModelIndex& itemIndex);
    void OnSelectIdObjectSignal(unsigned int id);
    void OnObjectsReceivedSignal();
    void OnConnectionStateChangedSignal(bool connect, QString host);
    void OnProfileRecievedSignal();
    void OnWindowSetTitleSignal(QString title);
    void OnSetInformationAboutCurrentUserSignal(CurrentUser& CUser);
    void Signal_GetModelActiveZVK(QStandardItemModel* modelActiveZVK); ///< Receivers fill the model or use it.
    void OnSettingsChangedSignal();
    void OnDataToReportSignal(unsigned int timeFrom, unsigned int timeTo, QList<int> ObjsList, unsigned int timeCur);
    void OnTimeSelectedByReportSignal(unsigned int time); ///< Unix seconds, as all times here.

public Q_SLOTS:
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
};

/** Incoming telemetry and mail. */
class PARDEL_EXPORT DataPumpNotifyer : public QObject
{
    Q_OBJECT

public:
    explicit DataPumpNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~DataPumpNotifyer() override;

Q_SIGNALS:
    void OnMailSignal();
    void OnDataRecievedSignal(MobData&);
    void OnMailSendedSignal();

public Q_SLOTS:
    void OnMail();
    void OnDataRecieved(MobData& mobData);
    void OnMailSended();
};

/** Events of the track player. */
class PARDEL_EXPORT PlayerNotifyer : public QObject
{
    Q_OBJECT

public:
    explicit PlayerNotifyer(QObject* parent = nullptr) : QObject(parent) {}
    ~PlayerNotifyer() override;

Q_SIGNALS:
    void OnSelectObjectsSignal();

public Q_SLOTS:
    void OnSelectObjects();
};
