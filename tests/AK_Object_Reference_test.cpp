// The reference manual: formulas, the clean-up of texts, links, both indexes.

#include "AK_Object_TestSupport.h"

#include <fstream>
#include <iterator>

TEST(AK_Reference, FormulasBecomeHtmlInTheOrderOfTheTable)
{
    const struct {
        const char* text;
        const char* html;
    } cases[] = {
        {"@@alfa_1 >= 2/@", "<I>&#945;<SUB>1</SUB> &#8804; 2</I>"},
        {"@@a <= b != c/@", "<I>a &#8805; b &#8800; c</I>"},
        {"@@beta - zeta*theta/@", "<I>&#946; &#8722; z&#951;&#183;th&#951;</I>"},
        {"@@Theta Beta Eta/@", "<I>Th&#951; B&#951; &#918;</I>"},
        {"@@sqrt(x^2 + y_ab)/@", "<I>&#8730;(x<SUP>2</SUP> + y<SUB>ab</SUB>)</I>"},
        {"@@a < b > c/@", "<I>a &#60; b &#62; c</I>"},
        {"a@@x/@b@@y/@c", "a<I>x</I>b<I>y</I>c"},
        {"@@no end", "@@no end"},
        {"/@ no begin", "/@ no begin"},
        {"@@/@", "<I></I>"},
        {"Chi @@Chi Gamma/@", "Chi <I>&#915; &#915;</I>"},
    };
    for (const auto& c : cases) EXPECT_EQ(Text(AK_Object::ExpandFormulaHtml(c.text)), c.html) << c.text;
    EXPECT_EQ(AK_Object::ExpandFormulaFox("the sum @@a_1 + 2/@ and @@b/@"), "the sum a_1 + 2 and b");
}

class AK_ReferencePageTest : public ObjectTest {
protected:
    std::string Written(AK_Object& object, const char* operation)
    {
        const AK_String file = directory / "page.html";
        EXPECT_EQ(object.Set(operation, file), 1);
        EXPECT_EQ(Text(AK_Object::_execStatus), "");
        std::ifstream stream(file.c_str());
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static void ExpectAll(const std::string& page, std::initializer_list<const char*> texts)
    {
        for (const char* text : texts) EXPECT_NE(page.find(text), std::string::npos) << text;
    }
};

TEST_F(AK_ReferencePageTest, TextsHeadingsAndBothIndexesOfOneObject)
{
    Describe("TestThing", "obj.Sample\n"
                          "\tgerman:Probe\n"
                          "\tdoc:A thing with a < b. See ->Sample.Size, ->Other and ->Object.Id. Use 'Size', not \\\n"
                          "\t\t'Length'.\n"
                          "\t\tgerman:Ein Ding.\n"
                          "\topr.Shape\n"
                          "\t\tdoc:'Size' and 'Id', for users' eyes, not '\n"
                          "\t\tdouble.Size:Size\n"
                          "\t\t\tgerman:Groesse\n"
                          "\t\t\tset:SetSize\n"
                          "\t\t\tvis:SizeVis\n"
                          "\t\t\tdoc:Size, @@h_1 >= 0/@, in m. ->plan.png\n"
                          "\t\topr.Shape\n"
                          "\t\t\tset:Shape\n"
                          "\t\t\tdoc:Not 'Shape' but 'SetSize'\n");
    TestThing thing("thing", nullptr);
    const std::string page = Written(thing, "WriteHtmlReferenceRecursive");
    ExpectAll(page, {
                        "<TITLE>page</TITLE>\n",
                        ">Description of Sample and all related objects<",
                        "<H1 ><A NAME=\"Sample\">Sample</A></H1>\n<P >A thing with a &#60; b. See "
                        "<A HREF=\"#Sample_Size\">Sample: Size</A>, \"Other\" and <A HREF=\"#Object_Id\">Object: "
                        "Id</A>. Use <B><A HREF=\"#Sample_Size\">Size</A></B>, not<BR><B>Length</B>.</P>\n",
                        "<P>Is a specialization of <A HREF=\"#Object\">Object</A>.</P>\n<HR>\n",
                        "<A NAME=\"Sample_Shape_group\">Shape</A></H2>\n<P CLASS=\"intended1\"><B><A HREF=\"#Sample_Size\""
                        ">Size</A></B> and <B><A HREF=\"#Object_Id\">Id</A></B>, for users' eyes, not '</P>",
                        "<A NAME=\"Sample_Shape\">Shape</A></H3>\n<P CLASS=\"intended2\">Not <B>Shape</B> but <B><A "
                        "HREF=\"#Sample_Size\">Size</A></B><BR>This is an operation",
                        "<A HREF=\"#Sample_Shape\">Shape</A> (Sample)<BR>\n",
                        "<H3 CLASS=\"intended2\"><A NAME=\"Sample_Size\">Size</A></H3>\n<P CLASS=\"intended2\">Size, "
                        "<I>h<SUB>1</SUB> &#8804; 0</I>, in m. <IMG SRC=\"plan.png\" ALT=\"\">",
                        "<A HREF=\"#Object\">Object</A><BR>\n</P><P>\n<A HREF=\"#Sample\">Sample</A><BR>\n</P>\n",
                        "<A HREF=\"#Sample_Size\">Size</A> (Sample)<BR>\n",
                    });
    EXPECT_EQ(page.find("SizeVis"), std::string::npos) << "properties of attributes are no entries";
    thing.Set("SetLanguage", "german");
    ExpectAll(Written(thing, "WriteHtmlReferenceRecursive"),
              {"Beschreibung von Probe und aller untergeordneten", "<P >Ein Ding.</P>", ">Liste der Attribute<",
               "<B><A HREF=\"#Sample_Size\">Groesse</A></B> and <B><A HREF=\"#Object_Id\">Id</A></B>"});
}

TEST_F(AK_ReferencePageTest, AllClassesWithTheirBases)
{
    AK_System::CreateDir(directory / "attributes/manual");
    ClassFile("manual/Start.atr", "obj.Start\n\tdoc:Things.\n\topr.To begin\n\t\tdoc:Take a ->Thing.\n");
    TestThing root("Viewer", nullptr);
    ExpectAll(Written(root, "WriteEntireHtmlReference"),
              {">korvo: Description of all objects<", "<A NAME=\"SpecialThing_Extra\">",
               "Is a specialization of <A HREF=\"#Thing\">Thing</A>",
               "<P >Things.</P>\n<H2 ><A NAME=\"Start_To_begin\">To begin</A></H2>\n"
               "<P >Take a <A HREF=\"#Thing\">Thing</A>.</P>\n<HR>\n<H1 >"});
    root.Set("WriteEntireHtmlReference", "/nowhere/page.html");
    EXPECT_EQ(Text(AK_Object::_execStatus), "cannot open file '/nowhere/page.html' for writing references!");
}
