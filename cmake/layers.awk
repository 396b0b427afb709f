# Reads "file:#include ..." lines, as grep prints them, and prints each include that leads to a layer further right than
# its own. A public header belongs to the layer of what it declares.

BEGIN {
    count = split("platform errors text names crs proj creation config", names, " ")
    for (i = 1; i <= count; ++i) rank[names[i]] = i
    declare("platform", "Export")
    declare("errors", "structured_exception TransformationException BBoxOutOfBounds CrsNotConfigured " \
                      "CrsUnknownSyntaxOrAlias FatalSubsystemError Misconfigured TransExecException Exception " \
                      "ConversionError FileNotFoundException UnexpectedException")
    declare("text", "NumericText")
    declare("names", "NameExplanation")
    declare("crs", "AbstractCrs BBoxType CRSindicationFormatInfo CoordTransformer Crs SrsFormattingOptions")
    declare("proj", "CrsDescriptions PointTransformer Proj4Crs")
    declare("creation", "CrsPool CrsCreator Proj4CrsCreator")
    declare("config", "CrsConfigData CrsConfig CoordinateTransformation")
}

function declare(layer, headers, list, n) {
    n = split(headers, list, " ")
    for (i = 1; i <= n; ++i) public[list[i]] = layer
}

# The layer of a file, or nothing for one of the standard library or of a third party.
function layer_of(path, folder, stem) {
    folder = path
    sub(/\/.*/, "", folder)
    if (folder in rank) return folder
    if (path !~ /^(include\/)?(CoordinateTransformation|QSHelpers|QuarvelSrv)\//) return ""
    stem = path
    gsub(/.*\/|\.h$/, "", stem)
    if (!(stem in public)) print path ": belongs to no layer of cmake/layers.awk"
    return public[stem]
}

{
    file = included = $0
    sub(/:.*/, "", file)
    gsub(/^[^"<]*["<]|[">].*/, "", included)
    from = layer_of(file)
    to = layer_of(included)
    if (to == "" || from == "" || rank[to] <= rank[from]) next
    if ($0 ~ /\/\/ Mutual: /) { ++mutual; next }
    print file " (" from ") includes " included " (" to ")"
}

END {
    if (mutual != 1) print mutual + 0 " includes are marked as mutual; creator and configuration are the one pair"
}
