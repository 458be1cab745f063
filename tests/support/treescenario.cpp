#include "treescenario.h"

#include <QMetaMethod>

QList<int> idsOf(const QByteArray& text)
{
    QList<int> ids;
    for (const QByteArray& id : text.split(',')) {
        bool isNumber = false;
        const int number = id.toInt(&isNumber);
        if (isNumber)
            ids.append(number);
    }
    return ids;
}

QByteArray methodsOf(const QMetaObject& metaObject)
{
    QByteArrayList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        methods += (method.access() == QMetaMethod::Private ? "-" : "") + method.methodSignature();
    }
    return methods.join(' ');
}

QByteArray randomTree(QRandomGenerator& random)
{
    const QByteArrayList states = {"", "-", "~", "+"};
    QByteArray text;
    int depth = 0;
    for (int i = 0, count = random.bounded(1, 13); i < count; ++i) {
        if (i > 0) {
            const int turn = random.bounded(3);
            if (turn == 0 && depth < 3) {
                text += '(';
                ++depth;
            } else if (turn == 1 && depth > 0) {
                text += ") ";
                --depth;
            } else {
                text += ' ';
            }
        }
        text += static_cast<char>('a' + i);
        if (random.bounded(4) > 0)
            text += ':' + QByteArray::number(random.bounded(-1, 5));
        text += states.at(random.bounded(states.size()));
    }
    return text + QByteArray(depth, ')');
}

QByteArray randomAction(QRandomGenerator& random, const QStandardItemModel* model, const QByteArrayList& verbs)
{
    const QByteArray& verb = verbs.at(random.bounded(verbs.size()));
    QByteArray action = verb + ' ' + QByteArray::number(random.bounded(allItems(model).size()));
    if (verb == "object")
        action += ' ' + QByteArray::number(random.bounded(3)) + ' ' + QByteArray::number(random.bounded(-1, 5));
    else if (verb == "rename" || verb == "insert")
        action += ' ' + QByteArray::number(random.bounded(-1, 5));
    else
        action += ' ' + QByteArray::number(random.bounded(3));
    return action;
}
