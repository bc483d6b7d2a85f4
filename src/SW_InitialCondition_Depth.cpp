// The depth of a release area where it is no constant: from a mesh of depths, or from a formula file.

#include "SW_InitialCondition.h"

#include "AK_Group.h"
#include "AK_Object_Namespace.h"
#include "SW_Mesh.h"

#include <cstdio>
#include <cstring>

static constexpr const char* meshPrefix = "from_ReleaseDHM_";
static constexpr const char* meshContainer = "root/Project/ReleaseDHMs";

AK_String SW_InitialCondition::RelDepFuncNameOpts() const
{
    AK_String list = AK_String("const") + ak_sep;
    if (const AK_Object* meshes = Root()->ObjectById(meshContainer))
        for (int i = 0; i < meshes->NumComponents(); ++i)
            if (meshes->ComponentAt(i)->IsOfType("DHM"))
                list = list + meshPrefix + meshes->ComponentAt(i)->Id() + ak_sep;
    return list + SW_FormulaNames("release_depth");
}

void SW_InitialCondition::SetRelDepFuncName(const AK_String& name)
{
    const Call running(this);   // the code of the file may delete the area
    const bool staysConstant = HasConstantDepth() && (name.IsEmpty() || name == "const");
    UnloadDepthFunction();
    _relDepFuncName = name.IsEmpty() ? AK_String("const") : name;
    if (staysConstant) return;   // which is what every saved area sets when it is loaded
    if (_relDepFuncName.StartsWith(meshPrefix))
        FindDepthMesh(_relDepFuncName.c_str() + std::strlen(meshPrefix));
    else if (!HasConstantDepth())
        LoadFormula(_relDepFuncName);
    UpdateMass("");
}

void SW_InitialCondition::UnloadDepthFunction()
{
    AK_UserObj::Retire(_relDepFuncNamespace);
    _relDepFuncNamespace = nullptr;
    _depthFunction = _init = _getpar = _setpar = nullptr;
    _depthMesh.Set("");
    _lastDepthCell = 0;
}

// ----------------------------------------------------------------------------------------------------------------
// A mesh
// ----------------------------------------------------------------------------------------------------------------

void SW_InitialCondition::FindDepthMesh(const AK_String& name)
{
    const AK_String path = AK_String(meshContainer) + "/" + name;
    const AK_Object* object = Root()->ObjectById(path);
    if (!object)
        AK_MSG("WARNING:cannot find ReleaseDHM '" << name << "' for release area " << Id());
    else if (!dynamic_cast<const SW_Mesh*>(object))
        AK_MSG("WARNING:object '" << name << "' is not a DHM ");
    _depthMesh.Set(path);   // it may still come
}

double SW_InitialCondition::DepthOnMesh(const SW_Mesh& mesh, const AK_Vec& point) const
{
    AK_Vec p = point;
    // A search without a start draws random numbers, on which the particles of a run would come to depend.
    const bool isCell = _lastDepthCell >= 0 && _lastDepthCell < mesh.NumCells();
    _lastDepthCell = mesh.Project(p, isCell ? _lastDepthCell : 0);
    return _lastDepthCell >= 0 ? p.z : 0;
}

// ----------------------------------------------------------------------------------------------------------------
// A formula
// ----------------------------------------------------------------------------------------------------------------

static constexpr const char* pointAndNormal = "double[],double[]";
static constexpr const char* pointAlone = "double[]";

// Finds the functions in the active namespace; false without one that gives a depth.
bool SW_InitialCondition::TakeFunctions()
{
    _depthFunction = AK_FunctionOfForm("depth", "double", {pointAndNormal, pointAlone});
    if (!_depthFunction) return false;
    _init = AK_FunctionOfForm("init", "void", {""});
    _getpar = AK_FunctionOfForm("getpar", "void", {"char[]"});
    _setpar = AK_FunctionOfForm("setpar", "void", {"char[]"});
    return true;
}

void SW_InitialCondition::LoadFormula(const AK_String& name)
{
    const AK_String path = AttributeFile(name, "cint", "release_depth");
    std::FILE* file = std::fopen(path.c_str(), "r");
    if (!file) {
        AK_MSG("ERROR: could not open formula file " << path);
        return;
    }
    const AK_ActiveNamespace root(AK_RootNamespace());
    Namespace* space = qvt_sci_NamespaceOpen();
    const int errors = qvt_sci_Parse(file);
    std::fclose(file);
    qvt_sci_NamespaceSwitchTo(space);   // an error inside a function leaves that function's namespace active
    _relDepFuncNamespace = space;
    if (errors)
        AK_MSG("ERROR: syntax errors in " << path);
    else if (!TakeFunctions())
        AK_MSG("ERROR: formula " << name << " does not contain function 'depth'");
    else {
        const CodeOf running(this);
        qvt_sci_InitAll();
        if (_init) qvt_sci_Call(_init);
    }
}

AK_String SW_InitialCondition::RelDepFuncPar() const
{
    if (!_getpar) return _relDepFuncPar;
    const CodeOf running(this);
    return CallWithText(_getpar, "");
}

void SW_InitialCondition::SetRelDepFuncPar(const AK_String& parameters)
{
    _relDepFuncPar = parameters;
    if (!_setpar) return;
    const Call living(this);
    {
        const CodeOf running(this);
        CallWithText(_setpar, parameters);
    }
    UpdateMass("");
}

double SW_InitialCondition::DepthByFormula(const AK_Vec& point, const AK_Vec& normal) const
{
    AK_Vec p = point, n = normal;   // which the code may write into
    Symbol* function = _depthFunction;
    for (int i = 0; i < qvt_sci_NumFormals(function); ++i) qvt_sci_BindArgLength(function, i, 3);
    const CodeOf running(this);
    const uint64_t depth =
        qvt_sci_NumFormals(function) == 2 ? qvt_sci_Call(function, &p.x, &n.x) : qvt_sci_Call(function, &p.x);
    return qvt_sci_AsDouble(depth);
}

double SW_InitialCondition::Depth(const AK_Vec& point, const AK_Vec& normal) const
{
    double depth = _depth;
    if (_depthFunction)
        depth = DepthByFormula(point, normal);
    else if (const SW_Mesh* mesh = _depthMesh.IsEmpty() ? nullptr : _depthMesh.Find(*this))
        depth = DepthOnMesh(*mesh, point);
    return depth > 0 ? depth : 0;
}
