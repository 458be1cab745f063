#include <Pardel/pardelversion.h>

// The build passes both: the project's version and PARDEL_REVISION.
static constexpr char releaseNumber[] = PARDEL_RELEASE;
static constexpr char sourceRevision[] = PARDEL_REVISION;

QString getPardelVersion()
{
    return QLatin1String(releaseNumber) + QLatin1Char('.') + QLatin1String(sourceRevision);
}
