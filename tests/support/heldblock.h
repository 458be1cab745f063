#pragma once

#include <Pardel/absgraphobj.h>

/** A block that releases its objects, as the holder of one has to. */
struct HeldBlock : BlockGraphObject
{
    HeldBlock() = default;
    Q_DISABLE_COPY_MOVE(HeldBlock)
    ~HeldBlock()
    {
        for (int i = 0; objects && i < objectCount; ++i)
            delete objects[i];
        delete[] objects;
    }
};
