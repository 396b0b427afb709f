# Reads lines "file:#include ..." from grep. Prints each include of a header whose layer is further right than the layer
# of the file. A public header belongs to the layer of its declarations.

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
    declare("creation", "CrsPool CrsCreator InstalledProjDirectory Proj4CrsCreator")
    declare("config", "CrsConfigData CrsConfig CoordinateTransformation")
}

function declare(layer, headers, list, n) {
    n = split(headers, list, " ")
    for (i = 1; i <= n; ++i) public[list[i]] = layer
}

# Returns the layer of a file, or nothing for the standard library and third parties.
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
    if (mutual != 1) print mutual + 0 " includes are marked as mutual; only the one of creator and configuration may be"
}
