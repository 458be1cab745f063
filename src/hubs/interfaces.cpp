#include <Pardel/interfaces.h>

Notifyer::~Notifyer() = default;

void Notifyer::OnMapMoved()
{
    Q_EMIT OnMapMovedSignal();
}

void Notifyer::OnMapMouseMove(int x, int y, QMouseEvent* e)
{
    Q_EMIT OnMapMouseMoveSignal(x, y, e);
}

void Notifyer::OnMapMouseUp(int x, int y, QMouseEvent* e)
{
    Q_EMIT OnMapMouseUpSignal(x, y, e);
}

void Notifyer::OnMapMouseDown(int x, int y, QMouseEvent* e)
{
    Q_EMIT OnMapMouseDownSignal(x, y, e);
}

void Notifyer::OnMapScaleChanged(int scale)
{
    Q_EMIT OnMapScaleChangedSignal(scale);
}

void Notifyer::OnObjectsClicked(QList<qint64>* lst)
{
    Q_EMIT OnObjectsClickedSignal(lst);
}

void Notifyer::OnObjectsHinted(QList<qint64>* lst)
{
    Q_EMIT OnObjectsHintedSignal(lst);
}

void Notifyer::OnDynamicObjectsHinted(QList<MapPrimitiveRib>* lst)
{
    Q_EMIT OnDynamicObjectsHintedSignal(lst);
}

void Notifyer::OnDynamicObjectsClicked(QList<MapPrimitiveRib>* lst)
{
    Q_EMIT OnDynamicObjectsClickedSignal(lst);
}

void Notifyer::OnOffCenterDinObject(MapPrimitiveRib* pMPRib)
{
    Q_EMIT OnOffCenterDinObjectSignal(pMPRib);
}

void Notifyer::OnMapPrimitivesClicked(QList<MapPrimitiveRib>* lst, int x, int y, QMouseEvent* e)
{
    Q_EMIT OnMapPrimitivesClickedSignal(lst, x, y, e);
}

void Notifyer::OnMapPrimitivesClickedPtr(QList<MapQt::MapPrimitive*>* lst, int x, int y, QMouseEvent* e)
{
    Q_EMIT OnMapPrimitivesClickedPtrSignal(lst, x, y, e);
}

void Notifyer::OnMapPrimitivesHinted(QList<MapPrimitiveRib>* lst, int x, int y)
{
    Q_EMIT OnMapPrimitivesHintedSignal(lst, x, y);
}

void Notifyer::OnChangeCountMaps(int index1, int index2)
{
    Q_EMIT OnChangeCountMapsSignal(index1, index2);
}

void Notifyer::OnKeyPressEsc()
{
    Q_EMIT OnKeyPressEscSignal();
}

void Notifyer::OnMapKeyPress(int key)
{
    Q_EMIT OnMapKeyPressSignal(key);
}

KernelNotifyer::~KernelNotifyer() = default;

void KernelNotifyer::OnChangeActiveMapModel(int index)
{
    Q_EMIT OnChangeActiveMapModelSignal(index);
}

void KernelNotifyer::OnAnswerFromServer(QByteArray& command, QByteArray& data)
{
    Q_EMIT OnAnswerFromServerSignal(command, data);
}

void KernelNotifyer::OnConnectToServer(QByteArray& connection)
{
    Q_EMIT OnConnectToServerSignal(connection);
}

void KernelNotifyer::OnSetNavigationData(const QModelIndex& itemIndex)
{
    Q_EMIT OnSetNavigationDataSignal(itemIndex);
}

void KernelNotifyer::OnSelectIdObject(unsigned int id)
{
    Q_EMIT OnSelectIdObjectSignal(id);
}

void KernelNotifyer::OnObjectsReceived()
{
    Q_EMIT OnObjectsReceivedSignal();
}

void KernelNotifyer::OnConnectionStateChanged(bool connected, QString host)
{
    Q_EMIT OnConnectionStateChangedSignal(connected, host);
}

void KernelNotifyer::OnProfileRecieved()
{
    Q_EMIT OnProfileRecievedSignal();
}

void KernelNotifyer::OnWindowSetTitle(QString title)
{
    Q_EMIT OnWindowSetTitleSignal(title);
}

void KernelNotifyer::OnSetInformationAboutCurrentUser(CurrentUser& CUser)
{
    Q_EMIT OnSetInformationAboutCurrentUserSignal(CUser);
}

void KernelNotifyer::GetModelActiveZVK(QStandardItemModel* modelActiveZVK)
{
    Q_EMIT Signal_GetModelActiveZVK(modelActiveZVK);
}

void KernelNotifyer::OnSettingsChanged()
{
    Q_EMIT OnSettingsChangedSignal();
}

void KernelNotifyer::OnDataToReport(unsigned int timeFrom, unsigned int timeTo, QList<int> ObjsList,
                                    unsigned int timeCur)
{
    Q_EMIT OnDataToReportSignal(timeFrom, timeTo, ObjsList, timeCur);
}

void KernelNotifyer::OnTimeSelectedByReport(unsigned int time)
{
    Q_EMIT OnTimeSelectedByReportSignal(time);
}

DataPumpNotifyer::~DataPumpNotifyer() = default;

void DataPumpNotifyer::OnMail()
{
    Q_EMIT OnMailSignal();
}

void DataPumpNotifyer::OnDataRecieved(MobData& mobData)
{
    Q_EMIT OnDataRecievedSignal(mobData);
}

void DataPumpNotifyer::OnMailSended()
{
    Q_EMIT OnMailSendedSignal();
}

PlayerNotifyer::~PlayerNotifyer() = default;

void PlayerNotifyer::OnSelectObjects()
{
    Q_EMIT OnSelectObjectsSignal();
}
