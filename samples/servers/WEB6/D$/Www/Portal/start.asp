<%@ Language="VBScript" %>
<h1>Riverside Clinic</h1>
